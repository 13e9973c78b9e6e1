"""Figures and tables as text, for the documents."""


def number(value):
    return f"{value:,.0f}" if abs(value) >= 100 else f"{value:.3g}"


def table(head, rows):
    return "\n".join("| " + " | ".join(row) + " |" for row in [head, ["---"] * len(head), *rows])
