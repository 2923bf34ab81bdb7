#!/usr/bin/env python3
"""Writes the QML module's reference as a Markdown page for Doxygen, from the QML files and the
C++ headers that register QML types; exits with 1, naming each, when a public type, property,
signal or method has no /// comment, so that the reference never falls behind the module.

    qmlreference.py OUTPUT.md FILE...

In a .qml file the /// lines before the root object document the type, and those before a
property, signal or function of the root object document it. Members that are no one's business
belong in a nested object (QtObject { id: internal }), which is not read. In a header, the ///
lines before the class, each Q_PROPERTY, Q_INVOKABLE method and signal document them; the
declarations that follow a comment without a blank line between share it.
"""

import re
import sys

problems = []


def fail(path, line, what):
    problems.append(f"{path}:{line}: {what} has no /// comment")


def without_strings_and_comments(line):
    line = re.sub(r'"(\\.|[^"\\])*"', '""', line)
    line = re.sub(r"'(\\.|[^'\\])*'", "''", line)
    return line.split("//", 1)[0]


def read_qml(path):
    lines = open(path, encoding="utf-8").read().splitlines()
    name = re.sub(r".*/|\.qml$", "", path)
    doc, comment, depth = [], [], 0
    kind = {"name": name, "base": None, "doc": "", "properties": [], "signals": [], "methods": []}
    for number, line in enumerate(lines, 1):
        text = line.strip()
        if text.startswith("///"):
            comment.append(text[3:].strip())
            continue
        code = without_strings_and_comments(line)
        if depth == 0 and re.match(r"^[A-Z]\w*\s*\{", text):
            kind["base"] = re.match(r"^([A-Z]\w*)", text).group(1)
            kind["doc"] = " ".join(comment)
            if not comment:
                fail(path, number, f"the type {name}")
        elif depth == 1:
            member = (re.match(r"^((?:readonly|required|default)\s+)*property\s+(\S+)\s+(\w+)", text)
                      or re.match(r"^signal\s+(\w+)\s*(\([^)]*\))?", text)
                      or re.match(r"^function\s+(\w+)\s*(\([^)]*\))", text))
            if member:
                entry = {"doc": " ".join(comment)}
                if text.startswith("signal"):
                    entry["text"] = member.group(1) + (member.group(2) or "()")
                    kind["signals"].append(entry)
                    what = f"the signal {name}.{member.group(1)}"
                elif text.startswith("function"):
                    entry["text"] = member.group(1) + member.group(2)
                    kind["methods"].append(entry)
                    what = f"the method {name}.{member.group(1)}"
                else:
                    readonly = " (read-only)" if "readonly" in (member.group(1) or "") else ""
                    entry["text"] = f"{member.group(3)} : {member.group(2)}{readonly}"
                    kind["properties"].append(entry)
                    what = f"the property {name}.{member.group(3)}"
                if not comment:
                    fail(path, number, what)
        comment = []
        depth += code.count("{") - code.count("}")
    return kind


def read_header(path):
    source = open(path, encoding="utf-8").read()
    kinds = []
    for match in re.finditer(r"((?:^[ \t]*///[^\n]*\n)*)^(?:class|struct)\s+(\w+)[^;{]*\{(.*?)^\};",
                             source, re.S | re.M):
        doc, cpp_name, body = match.groups()
        line = source.count("\n", 0, match.start(2)) + 1
        named = re.search(r"QML_NAMED_ELEMENT\((\w+)\)", body)
        if not named and "QML_ELEMENT" not in body:
            continue
        name = named.group(1) if named else cpp_name
        foreign = re.search(r"QML_FOREIGN\(([\w:]+)\)", body)
        kind = {"name": name, "base": None, "doc": comment_text(doc), "properties": [],
                "signals": [], "methods": [], "singleton": "QML_SINGLETON" in body,
                "foreign": foreign.group(1) if foreign else None}
        if not doc.strip():
            fail(path, line, f"the type {name}")
        body_start = match.start(3)
        in_signals, previous_end, last_where = False, 0, None
        member_pattern = re.compile(
            r"((?:^[ \t]*///[^\n]*\n)*)^[ \t]*(Q_PROPERTY\((.*?)\)\s*$|Q_SIGNALS:|public:|private:"
            r"|protected:|public Q_SLOTS:|Q_INVOKABLE\s+(.*?);|void\s+(\w+\(.*?\));)",
            re.S | re.M)
        for member in member_pattern.finditer(body):
            member_doc, whole, property_text, invokable, signal = member.groups()
            line = source.count("\n", 0, body_start + member.start(2)) + 1
            if whole.endswith(":"):
                in_signals, last_where = whole == "Q_SIGNALS:", None
                continue
            if property_text:
                typed = re.match(r"^(.*?)\s*\*?\s*(\w+)\s+(READ|MEMBER)", property_text)
                readonly = "" if re.search(r"\b(WRITE|MEMBER)\b", property_text) else " (read-only)"
                entry = f"{typed.group(2)} : {qml_type(typed.group(1))}{readonly}"
                where, what = "properties", "property"
            elif invokable:
                entry, where, what = qml_signature(invokable), "methods", "method"
            elif signal and in_signals:
                entry, where, what = qml_signature("void " + signal), "signals", "signal"
            else:
                continue
            # Declarations under one comment, with no blank line between them, share it.
            contiguous = "\n\n" not in re.sub(r"[ \t]+", "", body[previous_end:member.start(2)])
            previous_end = member.end()
            if kind[where] and not member_doc.strip() and contiguous and where == last_where:
                kind[where][-1]["text"] += f"`, `{entry}"
                continue
            last_where = where
            kind[where].append({"text": entry, "doc": comment_text(member_doc)})
            if not member_doc.strip():
                fail(path, line, f"the {what} {name}.{re.split(r'[ (]', entry)[0]}")
        kinds.append(kind)
    return kinds


QML_TYPES = {"QString": "string", "QVariant": "var", "QVariantMap": "object", "QJSValue": "function",
             "QColor": "color", "QQuickWindow": "Window", "bool": "bool", "int": "int"}


def qml_type(cpp):
    bare = re.sub(r"\bconst\b|[&*]", "", cpp).strip()
    return QML_TYPES.get(bare, bare)


def qml_signature(declaration):
    """A C++ declaration as QML calls it: name(parameter, [optional]) -> type."""
    declaration = re.sub(r"\s+", " ", declaration).strip()
    head, parameters = declaration.split("(", 1)
    parameters = re.sub(r"\)\s*(const)?\s*(override)?\s*$", "", parameters)
    *result, name = head.split()
    names = []
    for parameter in filter(None, (p.strip() for p in parameters.split(","))):
        word = re.match(r"^(.*?)(\w+)\s*(=.*)?$", parameter)
        names.append(f"[{word.group(2)}]" if word.group(3) else word.group(2))
    returned = qml_type(" ".join(result))
    return f"{name}({', '.join(names)})" + ("" if returned == "void" else f" -> {returned}")


def comment_text(block):
    return " ".join(line.strip()[3:].strip() for line in block.splitlines() if line.strip())


def markdown(kinds):
    out = ["# QML reference {#qml_reference}", "",
           "The QML module `Brevanti` (`import Brevanti`), type by type. Its C++ classes are in "
           "the class reference; this page is written from the module's own files.", ""]
    for kind in sorted(kinds, key=lambda k: k["name"]):
        traits = []
        if kind.get("singleton"):
            traits.append("singleton")
        if kind.get("base"):
            traits.append(f"a Qt Quick {kind['base']}")
        if kind.get("foreign"):
            traits.append(f"the C++ class {kind['foreign']}")
        title = kind["name"] + (f" ({', '.join(traits)})" if traits else "")
        out += [f"## {title}", "", kind["doc"], ""]
        if kind.get("foreign"):
            out += [f"Its properties, methods, signals and enumerations are those of "
                    f"{kind['foreign']}.", ""]
        for section, key in (("Properties", "properties"), ("Methods", "methods"),
                             ("Signals", "signals")):
            if kind[key]:
                out += [f"### {section}", ""]
                out += [f"- `{entry['text']}`: {entry['doc']}" for entry in kind[key]]
                out.append("")
    return "\n".join(out) + "\n"


def main():
    if len(sys.argv) < 3:
        print(__doc__.strip().splitlines()[3].strip(), file=sys.stderr)
        return 2
    kinds = []
    for path in sys.argv[2:]:
        if path.endswith(".qml"):
            kinds.append(read_qml(path))
        else:
            kinds += read_header(path)
    for problem in problems:
        print(problem, file=sys.stderr)
    if problems:
        return 1
    with open(sys.argv[1], "w", encoding="utf-8") as output:
        output.write(markdown(kinds))
    return 0


if __name__ == "__main__":
    sys.exit(main())
