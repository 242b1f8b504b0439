#!/usr/bin/env python3
"""The worked changes of docs/extending.md still apply, build and pass; and their first tests fail without them.

changes.py SOURCE BUILD: applies each patch of docs/changes to a copy of the tree and compiles there what the patch
touches. The rest is the build's own: a program that links more of what the patch touches gets that compiled, too.

Above its diff a patch says which test is to fail first, and what runs in the end:

    First: PROGRAM TEST
    Tests: PROGRAM FILTER

The log's fixed lines are looked at in each of them.
"""
import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

FIXED_LINES = ("carvoy-util-tests", "LogLines.*:*LogLine.*", "tests/unit/Util/LogLinesTest.cpp")


class Failure(Exception):
    pass


def run(command, **options):
    return subprocess.run(command, capture_output=True, text=True, errors="replace", **options)


def demand(command, **options):
    done = run(command, **options)
    if done.returncode != 0:
        raise Failure(f"{shlex.join(map(str, command))[:300]}\n{done.stdout[-4000:]}{done.stderr[-4000:]}")
    return done.stdout


class Build:
    """What the build knows: how each object is made of what, and how a program is linked."""

    def __init__(self, source, build, ninja):
        self.source, self.folder, self.ninja = source, build, ninja
        entries = json.loads((build / "compile_commands.json").read_text())
        self.commands = {re.search(r" -o (\S+)", entry["command"])[1]: entry for entry in entries}
        self.needs = {}
        self.read_needs(demand([ninja, "-C", str(build), "-t", "deps"]))

    def read_needs(self, text):
        for block in text.split("\n\n"):
            lines = block.splitlines()
            if lines and ": #deps" in lines[0]:
                paths = {os.path.normpath(self.folder / line.strip()) for line in lines[1:]}
                self.needs[lines[0].split(":")[0]] = paths

    def touched_by(self, files):
        """The objects that must be compiled anew where these files differ."""
        paths = {str(self.source / file) for file in files}
        return {output for output, entry in self.commands.items()
                if self.needs.get(output, set()) & paths or entry["file"] in paths}

    def objects_of(self, file):
        return {output for output, entry in self.commands.items() if entry["file"] == str(self.source / file)}

    def link_command(self, program):
        lines = demand([self.ninja, "-C", str(self.folder), "-t", "commands", f"bin/{program}"]).splitlines()
        line = next(line for line in reversed(lines) if f" -o bin/{program} " in line)
        return shlex.split(line.split("&&")[1])


class Copy:
    """A copy of the tree, and what was compiled of it."""

    def __init__(self, build, folder):
        self.build, self.folder = build, folder
        self.tree = folder / "tree"
        shutil.copytree(build.source, self.tree, symlinks=True,
                        ignore=lambda place, names: [name for name in names if name in ("build", ".git", "node_modules")])
        self.changed = set()
        self.made = {}

    def apply(self, patch, *options):
        before = {path: path.read_bytes() for path in self.touchable(patch)}
        demand(["git", "apply", *options, str(patch)], cwd=self.tree,
               env={**os.environ, "GIT_CEILING_DIRECTORIES": str(self.folder)})
        changed = {str(path.relative_to(self.tree)) for path, text in before.items() if path.read_bytes() != text}
        self.changed |= changed
        for output in self.build.touched_by(changed):
            self.made.pop(output, None)

    def touchable(self, patch):
        names = re.findall(r"^--- a/(\S+)", patch.read_text(encoding="utf-8"), re.MULTILINE)
        return [self.tree / name for name in names]

    def of_tree(self, text):
        """A path of the source tree as that of the copy; what the build made stays where it is."""
        source, build = str(self.build.source), str(self.build.folder)
        made = build[len(source):] if build.startswith(source + "/") else "/build"
        return re.sub(re.escape(source) + r"(?=[/\"]|$)(?!" + re.escape(made) + r"(?:[/\"]|$))", str(self.tree), text)

    def compile_one(self, output):
        entry = self.build.commands[output]
        made = self.folder / "objects" / output.replace("/", "-")
        made.parent.mkdir(exist_ok=True)
        # A header that was compiled with paths of the build's is then read as a text.
        words = [self.of_tree(word) for word in shlex.split(entry["command"]) if word != "-Winvalid-pch"]
        words[words.index("-o") + 1] = str(made)
        demand(words, cwd=entry["directory"])
        return output, made

    def compile(self, outputs):
        missing = sorted(set(outputs) - set(self.made))
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            self.made.update(pool.map(self.compile_one, missing))

    def link(self, program, own):
        """Links with the objects of the copy in front; those that the linker finds missing are compiled on the way."""
        stale = self.build.touched_by(self.changed)
        words = self.build.link_command(program)
        objects = [word for word in words if word.endswith(".o")]
        rest = self.folder / f"{program}-rest.a"
        linked = self.folder / program
        while True:
            self.compile(own)
            rest.unlink(missing_ok=True)
            demand(["ar", "qcsD", str(rest), *(word for word in objects if word not in own)], cwd=self.build.folder)
            command, placed = [], False
            for word in words:
                if not word.endswith(".o"):
                    command.append(word)
                elif not placed:
                    command += [*(str(self.made[output]) for output in sorted(own)), str(rest)]
                    placed = True
            command[command.index("-o") + 1] = str(linked)
            # Archives that need each other would stand in an order that new objects in front do not keep.
            first = command.index(str(rest))
            last = max(at for at, word in enumerate(command) if word.endswith(".a"))
            command[first:last + 1] = ["-Wl,--start-group", *command[first:last + 1], "-Wl,--end-group"]
            done = run([*command, "-Wl,--trace,--trace"], cwd=self.build.folder)
            pulled = self.pulled(done.stdout, objects) & stale - own
            if not pulled and done.returncode == 0:
                return linked
            if not pulled:
                raise Failure(f"{program} cannot be linked\n{done.stderr[-3000:]}")
            own = own | pulled

    def pulled(self, trace, objects):
        """The build's objects that the linker took."""
        found = set()
        for line in trace.splitlines():
            member = re.match(r"\(?.*?([^/()]+)\.a[()](.+\.o)\)?$", line)
            if not member:
                continue
            archive, name = member[1], "/" + member[2]
            if archive.endswith("-rest"):
                found |= {output for output in objects if output.endswith(name)}
            else:
                found |= {output for output in self.build.commands
                          if f"/{archive[3:]}.dir/" in output and output.endswith(name)}
        return found


def runs(program, test_filter):
    done = run([str(program), f"--gtest_filter={test_filter}", "--gtest_brief=1"])
    count = re.search(r"\[==========\] (\d+) tests?", done.stdout)
    if not count or count[1] == "0":
        raise Failure(f"{program.name} has no test {test_filter}\n{done.stdout[-2000:]}{done.stderr[-2000:]}")
    lines = done.stdout.splitlines()
    wrong = [at for at, line in enumerate(lines) if ": Failure" in line or "FAILED" in line]
    return done.returncode, int(count[1]), "\n".join(line for at in wrong for line in lines[at:at + 8])[:3000]


def instructions(patch):
    head = patch.read_text(encoding="utf-8").split("diff --git")[0]
    return {kind: [tuple(rest.split()) for key, rest in re.findall(r"^(\w+): (.*)$", head, re.MULTILINE) if key == kind]
            for kind in ("First", "Tests")}


def source_of(copy, test):
    suite, name = test.split(".")
    for path in sorted((copy.tree / "tests").rglob("*.cpp")):
        if re.search(rf"TEST\w*\({suite}, {name}\)", path.read_text(encoding="utf-8")):
            return str(path.relative_to(copy.tree))
    raise Failure(f"no source has the test {test}")


def of_program(build, program, outputs):
    return set(outputs) & set(build.link_command(program))


def try_change(build, patch, folder):
    copy = Copy(build, folder)
    told = instructions(patch)
    copy.apply(patch, "--include=tests/*")
    for program, test in told["First"]:
        own = of_program(build, program, build.objects_of(source_of(copy, test)))
        status, _, _ = runs(copy.link(program, own), test)
        if status == 0:
            raise Failure(f"{test} passes without the change")
    copy.apply(patch, "--exclude=tests/*")
    sources = set().union(*(build.objects_of(file) for file in copy.changed))
    tests = 0
    for program, test_filter in told["Tests"]:
        status, count, text = runs(copy.link(program, of_program(build, program, sources)), test_filter)
        tests += count
        if status != 0:
            raise Failure(f"{program} fails with the change\n{text}")
    program, test_filter, source = FIXED_LINES
    status, _, text = runs(copy.link(program, of_program(build, program, build.objects_of(source))), test_filter)
    if status != 0:
        raise Failure(f"the change moves a fixed line of the log\n{text}")
    # What the appliance is told of it.
    demand([str(copy.tree / "tests/checks/tizen/manifest.sh"), str(copy.tree), str(folder / "manifest")])
    # One object of each source: what no test of these links must at least compile.
    compiled = {build.commands[output]["file"] for output in copy.made}
    others = {build.commands[output]["file"]: output for output in sorted(sources)}
    copy.compile(output for file, output in others.items() if file not in compiled)
    print(f"OK: {patch.name}: {len(copy.changed)} files, {len(copy.made)} objects, {tests} tests, "
          f"{len(told['First'])} of them failed first")


def main():
    source, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    ninja = sys.argv[3] if len(sys.argv) > 3 else "ninja"
    known = Build(source, build, ninja)
    failed = False
    for patch in sorted((source / "docs/changes").glob("*.patch")):
        with tempfile.TemporaryDirectory(prefix="changes-") as folder:
            try:
                try_change(known, patch, pathlib.Path(folder))
            except Failure as failure:
                print(f"{patch.name}: {failure}")
                failed = True
    return failed


if __name__ == "__main__":
    sys.exit(main())
