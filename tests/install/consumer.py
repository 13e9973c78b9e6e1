#!/usr/bin/env python3
"""consumer.py XML: writes a C++ program that uses all that the public headers declare.

XML is the folder that Doxygen wrote for the headers. The program calls each function, constructs and destroys each
class and takes each typeid, so it links only if the libraries export all of them. It leaves out templates, private
members and pure virtual functions. Its main() is empty: none of the calls runs.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as ET

PROLOGUE = """
#include <cstdlib>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace consumer {

const volatile void *sink;

template<typename T> T make() { std::abort(); }
template<typename T> void keep(const T &value) { sink = &reinterpret_cast<const volatile char &>(value); }
template<typename T> void keepType()
{
    keep(typeid(T));
    if constexpr (requires { T::staticMetaObject; })
        keep(T::staticMetaObject);
}

} // namespace consumer
"""


def text(node):
    return " ".join("".join(node.itertext()).split()) if node is not None else ""


def read(folder):
    """The headers, and the namespaces and classes in them, without private classes and class templates."""
    found = [ET.parse(path).getroot().find("compounddef") for path in sorted(folder.glob("*.xml"))]
    found = [each for each in found if each is not None]
    headers = [text(each.find("compoundname")) for each in found if each.get("kind") == "file"]
    private = {inner.get("refid") for each in found for inner in each.findall("innerclass")
               if inner.get("prot") == "private"}
    used = [each for each in found if each.get("kind") in ("class", "struct", "namespace")
            and each.get("id") not in private and each.find("templateparamlist") is None
            and not text(each.find("compoundname")).startswith("std")]
    return headers, used


def functions(compound, access):
    for node in compound.iter("memberdef"):
        without_code = re.search(r"=\s*(delete|0)$", text(node.find("argsstring")))
        if node.get("kind") in ("function", "signal", "slot") and node.get("prot") in access and not without_code \
                and node.find("templateparamlist") is None:
            yield node


def variables(compound, access):
    for node in compound.iter("memberdef"):
        is_static = compound.get("kind") == "namespace" or node.get("static") == "yes"
        if node.get("kind") == "variable" and node.get("prot") in access and is_static:
            yield f"consumer::keep({scope_of(compound)}::{text(node.find('name'))});"


def scope_of(compound):
    """From the global namespace: ZelvanoViewController has a function zelvano()."""
    return "::" + text(compound.find("compoundname"))


def arguments(node):
    return ", ".join(f"consumer::make<{text(each.find('type'))}>()" for each in node.findall("param"))


def call(node, scope, instance):
    """Qualified by the scope, which calls a virtual function by its symbol."""
    if not instance or node.get("static") == "yes":
        receiver = ""
    elif node.get("const") == "yes":
        receiver = f"std::as_const({instance})."
    else:
        receiver = f"({instance})."
    return f"static_cast<void>({receiver}{scope}::{text(node.find('name'))}({arguments(node)}));"


def definition(head, statements):
    return "\n".join([head, "{", *(f"    {each}" for each in statements), "}"])


def namespace_code(compound, number):
    scope = scope_of(compound)
    calls = (call(node, scope, "") for node in functions(compound, ("public",)))
    return definition(f"void use{number}()", [*variables(compound, ("public",)), *calls])


def class_code(compound, number):
    """Uses a class from a derived one, which reaches protected members and may be abstract. A final class has none."""
    name = scope_of(compound)
    own, user = name.rpartition("::")[2], f"Use{number}"
    is_final = compound.get("final") == "yes"
    access = ("public",) if is_final else ("public", "protected")
    instance = "object" if is_final else "*this"
    declared, code = [], []
    statements = [f"consumer::keepType<{name}>();", *variables(compound, access)]
    for node in functions(compound, access):
        if text(node.find("name")) == f"~{own}":
            statements.append(f"({instance}).{name}::~{own}();")
        elif text(node.find("name")) != own:
            statements.append(call(node, name, instance))
        elif is_final:
            statements.append(f"new {name}({arguments(node)});")
        else:
            mark = f"std::integral_constant<int, {len(declared)}>"
            declared.append(f"    {user}({mark});")
            code.append(f"{user}::{user}({mark}) : {name}({arguments(node)}) {{}}")
    if is_final:
        return definition(f"void use{number}({name} &object)", statements)
    head = [f"struct {user} : {name}", "{", *declared, "    void use();", "};"]
    return "\n".join([*head, *code, definition(f"void {user}::use()", statements)])


def main():
    headers, compounds = read(pathlib.Path(sys.argv[1]))
    namespaces = [text(each.find("compoundname")) for each in compounds if each.get("kind") == "namespace"]
    print("\n".join(f"#include <ZelvanoUI/{header}>" for header in headers))
    print(PROLOGUE)
    for number, compound in enumerate(compounds):
        name = text(compound.find("compoundname"))
        enclosing = max((each for each in namespaces if f"{name}::".startswith(f"{each}::")), key=len)
        write = namespace_code if compound.get("kind") == "namespace" else class_code
        print(f"namespace {enclosing} {{\n{write(compound, number)}\n}}\n")
    print("int main() {}")


if __name__ == "__main__":
    main()
