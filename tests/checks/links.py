#!/usr/bin/env python3
"""Every relative link of a document leads to a file, and what stands behind its # to a heading there."""
import os
import pathlib
import re
import sys


def without_code(text):
    text = re.sub(r"^( *)```.*?^\1```$", "", text, flags=re.MULTILINE | re.DOTALL)
    return re.sub(r"`[^`\n]*`", lambda code: "`" + "x" * (len(code[0]) - 2) + "`", text)


def anchor(heading):
    """As the forges make it: lower case, blanks to hyphens, all other signs dropped."""
    heading = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).strip().lower()
    return re.sub(r"[^\w\- ]", "", heading).replace(" ", "-")


def anchors(path):
    text = re.sub(r"^( *)```.*?^\1```$", "", path.read_text(encoding="utf-8"), flags=re.MULTILINE | re.DOTALL)
    found = {}
    for heading in re.findall(r"^#{1,6} (.*)$", text, re.MULTILINE):
        name = anchor(heading)
        found[name] = found.get(name, -1) + 1
    return {f"{name}-{count}" if count else name for name, most in found.items() for count in range(most + 1)}


def trouble_with(document, link):
    target, _, place = link.partition("#")
    path = document.parent / target if target else document
    if not path.exists():
        return f"{document} links to {link}, which is not there"
    if place and (path.suffix != ".md" or place not in anchors(path)):
        return f"{document} links to {link}, but {path} has no such heading"
    return None


def main():
    troubles, count = [], 0
    for document in sorted([*pathlib.Path().glob("*.md"), *pathlib.Path("docs").glob("**/*.md")]):
        text = without_code(document.read_text(encoding="utf-8"))
        for link in re.findall(r"\]\(([^)\s]+)\)", text) + re.findall(r"^\[[^\]]+\]: (\S+)", text, re.MULTILINE):
            if not re.match(r"[a-z]+:", link):
                count += 1
                troubles.append(trouble_with(document, link))
    troubles = [trouble for trouble in troubles if trouble]
    print("\n".join(troubles) or f"OK: {count} links lead somewhere")
    return bool(troubles)


if __name__ == "__main__":
    os.chdir(sys.argv[1])
    sys.exit(main())
