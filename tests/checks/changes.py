#!/usr/bin/env python3
"""docs/extending.md shows each patch of docs/changes as it is: all of it, and nothing else."""
import os
import pathlib
import re
import sys

DOCUMENT = "docs/extending.md"


def pieces(lines):
    """The hunks of each file."""
    found, name = {}, None
    for line in lines:
        if line.startswith("--- a/"):
            name = line[len("--- a/"):]
            found[name] = []
        elif name and not line.startswith(("diff --git ", "index ")):
            # An empty line of a patch is a blank; editors take it away.
            found[name].append(line or " ")
    return found


def shown(section):
    return pieces(line for fence in re.findall(r"^```diff\n(.*?)^```$", section, re.MULTILINE | re.DOTALL)
                  for line in fence.splitlines())


def main():
    problems = []
    sections = re.split(r"^## ", pathlib.Path(DOCUMENT).read_text(encoding="utf-8"), flags=re.MULTILINE)
    for patch in sorted(pathlib.Path("docs/changes").glob("*.patch")):
        section = next((text for text in sections if f"`{patch}`" in text), "")
        kept, there = pieces(patch.read_text(encoding="utf-8").splitlines()), shown(section)
        problems += [f"{DOCUMENT} does not show {patch} as it is: {name}" for name in sorted(set(kept) | set(there))
                     if kept.get(name) != there.get(name)]
    print("\n".join(problems) or f"OK: {DOCUMENT} shows the changes as they are")
    return bool(problems)


if __name__ == "__main__":
    os.chdir(sys.argv[1])
    sys.exit(main())
