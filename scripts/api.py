#!/usr/bin/env python3
"""api.py XML QMLTYPES...: prints the public interface, headers and QML modules, one declaration on each line.

XML is the folder that Doxygen wrote. QMLTYPES is the description of a QML module, in the module's folder. Fails if a
class or a free function has no doc comment.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as ET

NAMESPACE = "zelvano::"
QML_HEADERS = "src/qml/"  # Not installed: hosts see only the QML types.


def text(node):
    joined = " ".join("".join(node.itertext()).split()) if node is not None else ""
    for pattern, written in ((r"< ", "<"), (r" >", ">"), (r"\{ ", "{"), (r" ([*&]+) ", r" \1"), (NAMESPACE, "")):
        joined = re.sub(pattern, written, joined)
    return joined


def words(*given):
    """Joins with spaces, but puts pointers and references to the name."""
    return re.sub(r"([*&]) ", r"\1", " ".join(filter(None, given)))


def is_described(node):
    return bool(text(node.find("briefdescription")) or text(node.find("detaileddescription")))


def template(node):
    parameters = node.findall("templateparamlist/param")
    written = (words(text(each.find("type")), text(each.find("declname"))) for each in parameters)
    return f"template<{', '.join(written)}>" if parameters else ""


def enumeration(node):
    values = (words(text(each.find("name")), text(each.find("initializer"))) for each in node.findall("enumvalue"))
    keyword = "enum class" if node.get("strong") == "yes" else "enum"
    return words(keyword, text(node.find("name")), f"{{ {', '.join(values)} }}")


def function(node):
    arguments = re.sub(r" ?=(\w+)$", r" = \1", text(node.find("argsstring")))
    return words(template(node), "explicit" if node.get("explicit") == "yes" else "",
                 "static" if node.get("static") == "yes" else "",
                 "virtual" if node.get("virt") != "non-virtual" and "override" not in arguments else "",
                 "signal" if node.get("kind") == "signal" else "",
                 text(node.find("type")), text(node.find("name")) + arguments)


def written_property(node):
    access = [f"{word} {text(node.find(word))}" for word in ("read", "write") if node.find(word) is not None]
    return words("property", text(node.find("type")), text(node.find("name")),
                 f"[{', '.join(access)}]" if access else "")


def declaration(node):
    """Returns None for friends, which are not interface."""
    kind = node.get("kind")
    if kind in ("function", "signal", "slot"):
        return function(node)
    if kind == "enum":
        return enumeration(node)
    if kind == "property":
        return written_property(node)
    if kind == "variable":
        return words(text(node.find("type")), text(node.find("name")), text(node.find("initializer")))
    if kind == "typedef":
        return f"using {text(node.find('name'))} = {text(node.find('type'))}"
    return None


def line_of(node):
    return int(node.find("location").get("line"))


def members(compound, indent):
    shown = [node for node in compound.iter("memberdef") if node.get("prot") != "private"]
    for node in sorted(shown, key=line_of):
        written = declaration(node)
        if written:
            yield indent + ("protected: " if node.get("prot") == "protected" else "") + written


def class_lines(compound):
    bases = (f"{base.get('prot')} {text(base)}" for base in compound.findall("basecompoundref"))
    heading = words(template(compound), compound.get("kind"), text(compound.find("compoundname")))
    return ["  " + " : ".join(filter(None, [heading, ", ".join(bases)])), *members(compound, "    ")]


def compounds(folder):
    """Namespaces, and all classes that are not private."""
    read = [ET.parse(path).getroot().find("compounddef") for path in sorted(folder.glob("*.xml"))]
    read = [each for each in read if each is not None]
    hidden = {inner.get("refid") for each in read for inner in each.findall("innerclass")
              if inner.get("prot") == "private"}
    return [each for each in read if each.get("kind") in ("class", "struct", "namespace")
            and each.get("id") not in hidden]


def entries(compound):
    """Yields (node, lines) for a class, or for each declaration of a namespace."""
    if compound.get("kind") != "namespace":
        yield compound, class_lines(compound)
        return
    prefix = f"{text(compound.find('compoundname'))}::".removeprefix(NAMESPACE)
    for node in compound.iter("memberdef"):
        written, name = declaration(node), text(node.find("name"))
        if written:
            yield node, ["  " + written.replace(f" {name}", f" {prefix}{name}", 1)]


def needs_description(node):
    """Classes and free functions need one. Operators and constexpr helpers do not: their names are enough."""
    if node.tag == "compounddef":
        return True
    return node.get("kind") == "function" and "constexpr" not in text(node.find("type")) and \
        text(node.find("name")).isidentifier()


def cpp(folder):
    """Returns {header: [(line number, lines)]} and the places without a doc comment."""
    headers, bare = {}, []
    for node, lines in (entry for compound in compounds(folder) for entry in entries(compound)):
        header = node.find("location").get("file")
        if header.startswith(QML_HEADERS):
            continue
        headers.setdefault(pathlib.Path(header).name, []).append((line_of(node), lines))
        if needs_description(node) and not is_described(node):
            bare.append(f"{header}:{line_of(node)}: {text(node.find('compoundname')) or text(node.find('name'))}")
    return headers, bare


def qml_blocks(description):
    """The blocks of a .qmltypes file as (kind, fields, blocks), with the fields as text."""
    stack = [("", {}, [])]
    pattern = r'(\w+)\s*\{|(\w+):\s*("[^"]*"|\[[^\]]*\]|[\w.-]+)|(\})'
    for opened, key, value, closed in re.findall(pattern, description):
        if opened:
            block = (opened, {}, [])
            stack[-1][2].append(block)
            stack.append(block)
        elif closed:
            stack.pop()
        else:
            stack[-1][1][key] = " ".join(value.split()).strip('"')
    return stack[0][2]


def qml_callable(word, fields, blocks):
    parameters = ", ".join(f"{each.get('type')} {each.get('name', '')}".strip()
                           for kind, each, _ in blocks if kind == "Parameter")
    result = fields.get("type", "void") + " " if word == "method" else ""
    return f"{word} {result}{fields['name']}({parameters})"


def qml_member(kind, fields, blocks):
    if kind == "Property":
        read_only = "readonly " if fields.get("isReadonly") == "true" else ""
        listed = f"list<{fields['type']}>" if fields.get("isList") == "true" else fields["type"]
        return f"{read_only}property {listed} {fields['name']}"
    if kind in ("Signal", "Method"):
        return qml_callable(kind.lower(), fields, blocks)
    if kind == "Enum":
        return f"enum {fields['name']} {fields['values']}".replace('"', "")
    raise ValueError(f"unknown in a description of QML types: {kind}")


def qml(description):
    for _, _, components in qml_blocks(description):
        for _, fields, blocks in sorted(components, key=lambda component: component[1]["name"]):
            exported = re.search(r"/(\w+) ", fields.get("exports", ""))
            if not exported and not fields["name"].startswith(NAMESPACE):
                continue  # A base class of Qt.
            name = exported.group(1) if exported else f"{fields['name']} (a base of others)"
            base = f" : {fields['prototype']}" if "prototype" in fields else ""
            yield f"  {name}{base}".replace(NAMESPACE, "")
            yield from (f"    {qml_member(*block)}".replace(NAMESPACE, "") for block in blocks)


def qml_file(path):
    """The properties, signals and functions that the root of a .qml file declares."""
    lines = path.read_text().splitlines()
    base = next(found[1] for line in lines if (found := re.match(r"([\w.]+) \{", line)))
    yield f"  {path.stem} : {base}"
    pattern = r" {4}((?:(?:default|required|readonly) )*property [\w<>.]+ \w+|signal [^/{]*|function [^{]*)"
    yield from (f"    {found[1].rstrip()}" for line in lines if (found := re.match(pattern, line)))


def main():
    folder, *descriptions = (pathlib.Path(argument) for argument in sys.argv[1:])
    headers, bare = cpp(folder)
    print("The public interface of each header, then the QML types. scripts/docs.sh writes this list.")
    for header in sorted(headers):
        print(f"\n{header}")
        for _, lines in sorted(headers[header]):
            print("\n".join(lines))
    for description in descriptions:
        module = description.with_name("qmldir").read_text().split()[1]
        print(f"\nQML: import {module}")
        print("\n".join(qml(description.read_text())))
        for path in sorted(description.parent.glob("*.qml")):
            print("\n".join(qml_file(path)))
    for place in bare:
        print(f"{place} has no doc comment", file=sys.stderr)
    return 1 if bare else 0


if __name__ == "__main__":
    sys.exit(main())
