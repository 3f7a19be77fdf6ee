#!/usr/bin/env python3
"""The page of the layer's calls, out of the headers of the layer.

    layer_page.py docs/layer.md.in common/winapi/include > build/docs-pages/layer.md

Prints the page with the calls of each header, and what the comments there say of them, in the place
of its line "(calls)".
"""
import pathlib
import re
import sys

CALL = re.compile(r"(?:WINAPI_EXPORT|extern \"C\" WINAPI_EXPORT)\s[^;{]*?\b(\w+)\(")
# Markdown's own signs, and those of Doxygen.
SPECIAL = re.compile(r"[\\@&<>#%*\"]")
NAMED = {"*": "&lowast;", '"': "&quot;"}


def escaped(text):
    return SPECIAL.sub(lambda match: NAMED.get(match.group(), "\\" + match.group()), text)


def text_of(lines):
    """A comment as Markdown; indented lines are code."""
    result, is_code = [], False
    for line in lines:
        if line.startswith("  "):
            result.extend(([] if is_code else ["", "~~~"]) + [line[2:]])
            is_code = True
            continue
        if is_code:
            result.append("~~~")
        is_code = False
        # A minus at the begin of a line would begin a list.
        if line.startswith("- ") and result:
            result[-1] += " " + line
            continue
        result.append(escaped(line))
    return "\n".join(result + (["~~~"] if is_code else [])) + "\n"


def paragraphs(lines):
    """Runs of lines without a blank one between."""
    run = []
    for line in lines + [""]:
        if line.strip():
            run.append(line)
        elif run:
            yield run
            run = []


class Part:
    """Calls that one comment tells of."""

    def __init__(self, comment):
        self.comment = comment
        self.code = ""

    def calls(self):
        return list(dict.fromkeys(CALL.findall(self.code)))


def parts_of(run):
    part = Part([])
    for line in run:
        if match := re.match(r"\s*//(?: (.*)|)$", line):
            if part.code.strip():
                yield part
                part = Part([])
            part.comment.append(match.group(1) or "")
        else:
            if line.startswith("typedef") and part.calls():
                yield part
                part = Part([])
            part.code += re.sub(r"\s//.*", "", line) + "\n"
    yield part


def page_of(path):
    lines = path.read_text(encoding="utf-8").split("\n")
    begin = next((at for at, line in enumerate(lines) if not line.startswith("//")), len(lines))
    head = [line[3:] for line in lines[:begin]]
    result = [f"## {path.name} {{#layer_{path.stem}}}", "", text_of(head)]
    count = 0
    for run in paragraphs(lines[begin:]):
        for part in parts_of(run):
            calls = part.calls()
            count += len(calls)
            if calls:
                result.append("**" + ", ".join(escaped(call) for call in calls) + "**\n")
            if part.comment:
                result.append(text_of(part.comment))
            elif calls:
                result.append("As Windows' documentation has it.\n")
    return result if count else []


def main():
    template = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
    pages = [page_of(path) for path in sorted(pathlib.Path(sys.argv[2]).glob("*.h"))]
    calls = "\n".join(line for page in pages for line in page)
    if "\n(calls)\n" not in template or not calls:
        sys.exit("layer_page.py: no place for the calls, or none found")
    print(template.replace("\n(calls)\n", "\n" + calls + "\n"))


if __name__ == "__main__":
    main()
