#!/usr/bin/env python3
"""Doxygen's input filter: makes the comments of a header such that Doxygen takes them.

    reference_comments.py common/kelp/kelp0lang/String.h

The headers of this tree have plain comments: a paragraph at the top that tells what the family is
for, and one above each declaration, which also speaks for those that follow it without a blank line
between. Doxygen wants "///", knows commands and Markdown in a text, and gives a comment to one
declaration alone. The filter prints the header with the comments in that form; the code stays.
"""
import re
import sys

# What the text of a comment must not mean to Doxygen.
SPECIAL = re.compile(r"[\\@&<>#%\"]")
FULL_LINE = re.compile(r"^(\s*)//(?: (.*)|)$")
# A comment before one of these tells of what comes behind it, not of a declaration.
NO_DECLARATION = re.compile(r"^\s*(?:$|//|}|\{|#(?!define)|public:|protected:|private:|static_assert|"
                            r"namespace (?:kelp|sarn|xlate|Dovek|std|detail)\b|class \w+;|"
                            r"extern \"C\" \{)")
# Code that a comment behind it speaks of: a member or an enumerator, no closing brace or directive.
DOCUMENTED = re.compile(r"^\s*[^\s#}].*[\w,;}]\s*$")
# What tells for itself, and isn't spoken of by the comment of what stands before it.
PLAIN = re.compile(r"=\s*(?:default|delete);|^\s*(?:virtual )?~\w+\(|^\s*friend class")
# A class without a comment of its own: that at the top of its header is about it.
CLASS = re.compile(r"^(?:class|struct) (?:(?:KELP0LANG|SARNUTILS)_API )?\w+[^;]*$")
CODE = re.compile(r"[;{}]\s*(?://.*)?$")
SCOPE = re.compile(r"\b(?:namespace|class|struct|enum|union)\b|extern \"C\"")


def escaped(text):
    # Within quotation marks Doxygen reads escapes in another way. A point there ends no sentence.
    text = SPECIAL.sub(lambda match: "&quot;" if match.group() == '"' else "\\" + match.group(), text)
    return text.replace("&quot;.&quot;", "&quot;\\.&quot;")


def paragraphs(lines):
    """The lines of a comment for Doxygen; indented ones are code or a table, and stay as they are."""
    result, block = [], []

    def end_block():
        while block and not block[-1]:
            block.pop()
        if not block:
            return
        indent = min(len(line) - len(line.lstrip()) for line in block if line)
        is_code = any(CODE.search(line) for line in block)
        begin, end = ("\\code{.cpp}", "\\endcode") if is_code else ("\\verbatim", "\\endverbatim")
        result.extend([begin] + [line[indent:] for line in block] + [end, ""])
        block.clear()

    for line in lines:
        if line.startswith("  ") or (block and not line):
            block.append(line)
        else:
            end_block()
            result.append(escaped(line))
    end_block()
    while result and not result[-1]:
        result.pop()
    return result


class Scopes:
    """Where in the code a line stands: how deep, and whether within the body of a function."""

    def __init__(self):
        self.open = []  # whether each open brace is that of a namespace or a type
        self.statement = ""
        self.round = 0
        self.ended = False  # a statement ended on the line that was read last ...
        self.ended_type = False  # ... and it was a type with its body

    def in_body(self):
        return not all(self.open)

    def read(self, code):
        self.ended = False
        # No comments, texts or characters that could hold a brace.
        code = re.sub(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])+\'', '""', code)
        code = re.sub(r"//.*", "", code)
        if code.startswith("#"):
            self.ended = not code.endswith("\\")
            return
        for char in code:
            if char == "(":
                self.round += 1
            elif char == ")":
                self.round -= 1
            if char == "{":
                # "= {" and the like, as a function's body, hold no declarations.
                is_scope = bool(SCOPE.search(self.statement)) and self.round == 0 and \
                    not re.search(r"[=)]\s*$|\)\s*(?:const|noexcept|override|\s)*$", self.statement)
                self.open.append(is_scope)
                self.statement = ""
            elif char == "}":
                self.ended_type = bool(self.open) and self.open.pop()
                self.statement = "}"
                self.ended = True
            elif char == ";" and self.round == 0:
                self.ended_type = self.ended_type and self.statement.startswith("}")
                self.statement = ""
                self.ended = True
            else:
                self.statement += char
                if not char.isspace():
                    self.ended = False
        self.statement += " "


def trailing_comment(line):
    """The place of a comment behind code, or -1."""
    without_texts = re.sub(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])+\'',
                           lambda match: "x" * len(match.group()), line)
    place = without_texts.find("//")
    return place if place > 0 and line[:place].strip() else -1


class Filter:
    def __init__(self, path, lines):
        self.name = path.rsplit("/", 1)[-1]
        self.lines = lines
        self.scopes = Scopes()
        self.output = []
        self.repeated = None  # the comment that speaks for the declarations up to a blank line
        self.repeated_depth = 0
        self.is_given = False  # the next declaration has the comment already
        self.trailing_column = -1

    def run(self):
        at = 0
        while at < len(self.lines):
            at = self.comment(at) if FULL_LINE.match(self.lines[at]) else self.code(at)
        return self.output

    def comment(self, at):
        begin = at
        text = []
        while at < len(self.lines) and (match := FULL_LINE.match(self.lines[at])):
            indent, line = match.groups()
            if text == [] and len(indent) == self.trailing_column:
                self.output.append(f"{indent}///< {escaped(line or '')}")
                begin = at = at + 1
                continue
            self.trailing_column = -1
            text.append(line or "")
            at += 1
        if not text:
            return at
        following = self.lines[at] if at < len(self.lines) else ""
        if self.scopes.in_body():
            self.output.extend(self.lines[begin:at])
        elif begin == 0:
            self.emit("", [f"\\file {self.name}"] + paragraphs(text))
        elif not NO_DECLARATION.match(following):
            indent = re.match(r"\s*", following).group()
            self.repeated = (indent, paragraphs(text))
            self.repeated_depth = len(self.scopes.open)
            self.emit(*self.repeated)
            self.is_given = True
        elif not self.scopes.open or all(not line.startswith("  ") for line in self.lines[begin:at]):
            self.emit("", [f"\\file {self.name}"] + paragraphs(text))
        else:
            self.output.extend(self.lines[begin:at])
        return at

    def code(self, at):
        line = self.lines[at]
        depth = len(self.scopes.open)
        if self.repeated and depth == self.repeated_depth and self.scopes.ended:
            if self.is_given:
                pass
            elif NO_DECLARATION.match(line) or self.scopes.ended_type:
                self.repeated = None
            elif not PLAIN.search(line):
                self.emit(*self.repeated)
        head = self.lines[at + 1] if line.startswith("template <") else line
        if CLASS.match(head) and not self.is_given and \
                not (line is head and self.lines[at - 1].startswith("template <")):
            self.emit("", [f"Told with its family, {self.name}."])
        self.is_given = False
        place = trailing_comment(line)
        self.scopes.read(line)
        self.trailing_column = -1
        if place >= 0 and not self.scopes.in_body() and DOCUMENTED.search(line[:place]):
            self.trailing_column = place
            line = f"{line[:place]}///< {escaped(line[place + 2:].strip())}"
        self.output.append(line)
        return at + 1

    def emit(self, indent, lines):
        self.output.extend(f"{indent}/// {line}".rstrip() for line in lines)


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        lines = file.read().split("\n")
    print("\n".join(Filter(sys.argv[1], lines).run()))


if __name__ == "__main__":
    main()
