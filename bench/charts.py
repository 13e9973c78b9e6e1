"""Draws bar charts as SVG: dark text on white, in one column of a page."""

from html import escape

from figures import number

WIDTH, LABELS, MARGIN, ROW = 760, 210, 16, 30
COLOURS = ["#2a6fb0", "#e08a1e", "#4c9a4c", "#8a63a8", "#8c8c8c"]


def text(x, y, content, size=14, weight="normal", anchor="start", colour="#222"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" font-weight="{weight}" text-anchor="{anchor}" '
            f'fill="{colour}">{escape(content)}</text>')


def bar(x, y, width, height, colour):
    return f'<rect x="{x:.1f}" y="{y:.1f}" width="{max(width, 0.5):.1f}" height="{height:.1f}" fill="{colour}"/>'


def write(path, title, note, height, parts):
    """The title says what to see, the note what was measured."""
    head = (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" width="{WIDTH}" height="{height}" '
            f'font-family="DejaVu Sans, Helvetica, Arial, sans-serif" role="img">\n<title>{escape(title)}</title>\n'
            f'<rect width="{WIDTH}" height="{height}" fill="#fff"/>')
    lines = [head, text(MARGIN, 28, title, 17, "bold"), text(MARGIN, 50, note, 13, colour="#555"), *parts, "</svg>", ""]
    path.write_text("\n".join(lines))


def bars(path, title, note, unit, rows, names=()):
    """Each row is a label and its values, drawn one behind another, of which the names give the meaning. A value of the
    form (value, None) leaves a gap."""
    top = 96 if names else 70
    parts = []
    x = MARGIN
    for name, colour in zip(names, COLOURS):
        parts += [bar(x, 66, 13, 13, colour), text(x + 19, 77, name, 13)]
        x += 36 + 8 * len(name)
    room = WIDTH - LABELS - MARGIN - 110
    longest = max(sum(value if isinstance(value, (int, float)) else value[0] for value in values) for _, values in rows)
    for i, (label, values) in enumerate(rows):
        y = top + i * ROW
        x = LABELS
        total = 0
        parts.append(text(LABELS - 10, y + 15, label, anchor="end"))
        for value, colour in zip(values, COLOURS):
            is_gap = isinstance(value, tuple)
            width = (value[0] if is_gap else value) / longest * room
            if not is_gap:
                parts.append(bar(x, y, width, 20, colour if names else COLOURS[0]))
                total += value
            x += width
        parts.append(text(x + 8, y + 15, f"{number(total)} {unit}"))
    write(path, title, note, top + len(rows) * ROW + 8, parts)


def columns(path, title, note, values, first, marks):
    """One column for each of the values, of which the first has this number. Marks colour a range of columns."""
    top, height = 70, 170
    room = WIDTH - 2 * MARGIN - 50
    step = room / len(values)
    highest = max(values)
    parts = [text(MARGIN + 40, top + 5, number(highest), 12, anchor="end"),
             text(MARGIN + 40, top + height, "0", 12, anchor="end")]
    for i, value in enumerate(values):
        x = MARGIN + 50 + i * step
        marked = any(begin <= i + first < end for begin, end in marks)
        tall = value / highest * height
        parts.append(bar(x, top + height - tall, step * 0.8, tall, COLOURS[1] if marked else COLOURS[0]))
        if (i + first) % 5 == 0:
            parts.append(text(x + step * 0.4, top + height + 18, str(i + first), 12, anchor="middle"))
    write(path, title, note, top + height + 30, parts)
