#!/usr/bin/env python3
"""The page of the command-line programs, with what they print of themselves.

    help_page.py docs/programs.md.in build/release/bin > build/docs-pages/programs.md

A line "(help of NAME)" in the page gives way to the help of that program and of its commands.
"""
import os
import pathlib
import re
import subprocess
import sys


def help_of(program, *command):
    # English whatever the language of whoever makes the site.
    environment = dict(os.environ, LC_ALL="C.UTF-8", LANGUAGE="en")
    done = subprocess.run([program, *command, "--help"], env=environment, check=True,
                          stdout=subprocess.PIPE, encoding="utf-8")
    return f"~~~\n{done.stdout.rstrip()}\n~~~\n"


def section_of(program):
    text = help_of(program)
    commands = dict.fromkeys(re.findall(rf"^  {program.name} ([a-z]+)\b", text, re.MULTILINE))
    commands.pop("help", None)
    parts = [f"## {program.name} {{#program_{program.name}}}\n", text]
    for command in commands:
        parts += [f"### {program.name} {command} {{#program_{program.name}_{command}}}\n",
                  help_of(program, command)]
    return "\n".join(parts)


def main():
    template = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
    programs = pathlib.Path(sys.argv[2]).resolve()
    print(re.sub(r"^\(help of (\w+)\)$", lambda match: section_of(programs / match.group(1)),
                 template, flags=re.MULTILINE))


if __name__ == "__main__":
    main()
