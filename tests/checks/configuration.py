#!/usr/bin/env python3
"""docs/configuration.md has every build variable, preset and environment variable of the sources, and no other."""
import json
import os
import pathlib
import re
import sys

DOCUMENT = "docs/configuration.md"
CALL = re.compile(r"\b(?:secure_)?getenv\(([^()]+)\)")
PARAMETER = re.compile(r"(\w+)\(const char\* (?:const )?(\w+)[,)]")


def sources(*endings):
    """The texts of all files that end so, but for what is made."""
    found = {}
    for folder, folders, names in os.walk("."):
        folders[:] = [name for name in folders if name not in ("build", "node_modules") and not name.startswith(".")]
        for name in names:
            if name.endswith(endings):
                path = pathlib.Path(folder, name)
                found[str(path)] = path.read_text(encoding="utf-8")
    return found


def constants(texts):
    """Names that stand for a text: PlanVariable -> FAULT_PLAN."""
    pattern = re.compile(r"\b(\w+)(?:\[\])? = \"([A-Z][A-Z_]+)\";")
    return dict(match.groups() for text in texts.values() for match in pattern.finditer(text))


def wrapped(text, place, parameter):
    """The variables that a file asks for through a function of its own, which passes its parameter on."""
    heads = [match for match in PARAMETER.finditer(text, 0, place) if match[2] == parameter]
    if not heads:
        return []
    return re.findall(r"\b" + heads[-1][1] + r"\(\"([A-Z_]+)\"", text)


def environment_of_cpp(problems):
    texts = sources(".cpp", ".h")
    known = constants(texts)
    names = set()
    for file, text in texts.items():
        for call in CALL.finditer(text):
            argument = call[1].strip()
            name = argument.split("::")[-1]
            if argument.startswith('"'):
                names.add(argument.strip('"'))
            elif name in known:
                names.add(known[name])
            elif asked := wrapped(text, call.start(), name):
                names.update(asked)
            elif "tzplatform" not in text[max(0, call.start() - 11):call.start()]:
                problems.append(f"{file}: nobody can tell which variable getenv({argument}) reads")
    return names


def environment_of_scripts():
    names = set()
    for text in sources(".mjs", ".js").values():
        names.update(re.findall(r"process\.env\.([A-Z_]+)", text))
    for text in [pathlib.Path("dev").read_text(), *sources(".sh").values()]:
        names.update(re.findall(r"\$\{([A-Z_]+):?-", text))
    for text in sources(".py").values():
        names.update(re.findall(r"os\.environ(?:\.get\(|\[)\"([A-Z_]+)\"", text))
    return names


def build_variables():
    """Each cache variable with its default; None where CMake finds it."""
    variables = {}
    for text in sources("CMakeLists.txt", ".cmake").values():
        for name, value in re.findall(r"^\s*set\((\w+) (\"[^\"]*\"|\S+) CACHE ", text, re.MULTILINE):
            variables[name] = value.strip('"')
        for name, value in re.findall(r"^\s*option\((\w+) \"[^\"]*\" (\w+)\)", text, re.MULTILINE):
            variables[name] = value
        for name in re.findall(r"^\s*find_program\((\w+)", text, re.MULTILINE):
            variables[name] = None
    return variables


def presets():
    listed = json.loads(pathlib.Path("CMakePresets.json").read_text())["configurePresets"]
    return {preset["name"]: (preset.get("inherits", ""), preset.get("cacheVariables", {})) for preset in listed}


def rows(document, heading):
    """The cells of each row of the tables under the headings that begin so."""
    found = []
    for section in re.split(r"^## ", document, flags=re.MULTILINE)[1:]:
        if not section.startswith(heading):
            continue
        for line in section.splitlines():
            if line.startswith("| `"):
                found.append([cell.strip() for cell in line.strip("|").split("|")])
    return found


def bare(cell):
    return cell.strip("`")


def compare(kind, in_code, in_document, problems):
    problems += [f"{DOCUMENT} lacks the {kind} {name}" for name in sorted(in_code - in_document)]
    problems += [f"{DOCUMENT} has the {kind} {name}, which nothing reads" for name in sorted(in_document - in_code)]


def check_build(document, problems):
    code = build_variables()
    written = {bare(row[0]): row[3] for row in rows(document, "Build variables")}
    compare("build variable", set(code), set(written), problems)
    for name in set(code) & set(written):
        if code[name] is not None and bare(written[name]) != code[name]:
            problems.append(f"{DOCUMENT}: the default of {name} is {code[name]!r}, not {bare(written[name])!r}")


def check_presets(document, problems):
    code = presets()
    written = {bare(row[0]): (bare(row[1]), dict(text.split("=", 1) for text in re.findall(r"`([^`]+)`", row[3])))
               for row in rows(document, "Presets")}
    compare("preset", set(code), set(written), problems)
    problems += [f"{DOCUMENT}: the preset {name} is {code[name]}, not {written[name]}"
                 for name in set(code) & set(written) if code[name] != written[name]]


def main():
    problems = []
    document = pathlib.Path(DOCUMENT).read_text(encoding="utf-8")
    check_build(document, problems)
    check_presets(document, problems)
    read = environment_of_cpp(problems) | environment_of_scripts()
    compare("environment variable", read, {bare(row[0]) for row in rows(document, "Environment")}, problems)
    for problem in problems:
        print(problem)
    if not problems:
        print(f"OK: {len(build_variables())} build variables, {len(presets())} presets, {len(read)} environment variables")
    return bool(problems)


if __name__ == "__main__":
    os.chdir(sys.argv[1])
    sys.exit(main())
