#!/usr/bin/env python3
"""Runs the code of documents that is marked as runnable, against a running appliance of its own for each document.

run.py SOURCE BUILD [DOCUMENT...], all that have some where none is named: marked are

    ```sh run               a script: each of its commands must succeed
    ```console run          `$ COMMAND`, and what it prints, where something is shown below it
    <!-- run ... -->        a script that readers need not see
    <!-- shown: A B -->     texts that stand for others on this machine: whatever comes where one is printed first
                            is meant by it from there on

A document's blocks run in one shell, in a folder like the checkout's. In what is shown `…` stands for any text, and
alone on a line for any lines. A command that goes on in the background (`&`) is waited for until it has printed what
is shown.
"""
import os
import pathlib
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time

LIMIT = 60  # seconds for one command
BLOCK = re.compile(r"^```(sh|console) run\n(.*?)^```$|^<!-- run\n(.*?)^-->$|^<!-- shown: (.*?) -->$",
                   re.MULTILINE | re.DOTALL)


class Failure(Exception):
    pass


class Places:
    """What the documents' paths are here, and what else they show that differs from machine to machine."""

    def __init__(self, source, checkout, root):
        self.known = {"/home/me/carvoy-service/build/host/appliance": [str(root)],
                      "/home/me/carvoy-service": [str(checkout), str(source)], "/home/me": [str(checkout)]}

    def stand_for(self, names):
        self.known.update({name: None for name in names if name not in self.known})

    def command(self, text):
        for name in self.names():
            if self.known[name]:
                text = text.replace(name, self.known[name][0])
        return text

    def names(self):
        return sorted(self.known, key=len, reverse=True)

    def pattern(self, shown):
        """The regular expression of what is shown, and which name each of its groups stands for."""
        groups = []

        def part(match):
            text = match[0]
            if text == "…":
                return ".*"
            if self.known[text]:
                return "(?:" + "|".join(map(re.escape, self.known[text])) + ")"
            if text in groups:
                return f"(?P=g{groups.index(text)})"
            groups.append(text)
            return rf"(?P<g{len(groups) - 1}>[^\s\"',;]+)"

        special = re.compile("|".join(map(re.escape, ["…", *self.names()])))
        lines = []
        for line in shown.rstrip().split("\n"):
            if line.strip() == "…":
                lines.append(r"(?:[^\n]*\n)*?")
                continue
            regex, at = "", 0
            for match in special.finditer(line):
                regex += re.escape(line[at:match.start()]) + part(match)
                at = match.end()
            lines.append(regex + re.escape(line[at:].rstrip()) + r"[ \t]*\n")
        return re.compile(r"\n*" + "".join(lines) + r"\s*"), groups

    def learn(self, shown, printed):
        """Whether that was printed; what stands for others is known from then on."""
        pattern, groups = self.pattern(shown)
        match = pattern.fullmatch(printed if printed.endswith("\n") else printed + "\n")
        if match:
            for at, name in enumerate(groups):
                self.known[name] = [match[f"g{at}"]]
        return bool(match)


class Shell:
    def __init__(self, folder, checkout, environment):
        self.folder = folder
        self.pipe = folder / "output"
        self.status, told = os.pipe()
        self.process = subprocess.Popen(["bash", "--noprofile", "--norc"], stdin=subprocess.PIPE, text=True, cwd=checkout,
                                        env=environment, pass_fds=[told])
        self.told = told
        os.set_inheritable(told, False)

    def run(self, script, is_enough):
        """Runs a script; its status, and what was printed until it had ended and that was enough."""
        file = self.folder / "script"
        file.write_text(f"failed=0; trap 'failed=$?' ERR\n{script}\ntrap - ERR; (exit $failed)\n", encoding="utf-8")
        # One for each: what goes on in the background keeps its own open.
        self.pipe.unlink(missing_ok=True)
        os.mkfifo(self.pipe)
        output = os.open(self.pipe, os.O_RDONLY | os.O_NONBLOCK)
        try:
            self.process.stdin.write(f". {file} >{self.pipe} 2>&1 </dev/null {self.told}>&-; echo $? >&{self.told}\n")
            self.process.stdin.flush()
            return self.listen(output, is_enough)
        finally:
            os.close(output)

    def listen(self, output, is_enough):
        poll = select.poll()
        poll.register(output, select.POLLIN)
        poll.register(self.status, select.POLLIN)
        printed, status, ended = b"", None, False
        deadline = time.monotonic() + LIMIT
        while True:
            if status is not None and (ended or is_enough(printed.decode(errors="replace"))):
                return status, printed.decode(errors="replace")
            ready = poll.poll(max(0, deadline - time.monotonic()) * 1000)
            if not ready:
                return (status if status is not None else "none in time"), printed.decode(errors="replace")
            for descriptor, _ in ready:
                if descriptor == output:
                    text = os.read(output, 65536)
                    printed += text
                    if not text:
                        ended = True
                        poll.unregister(output)
                else:
                    status = int(os.read(self.status, 64))
                    poll.unregister(self.status)

    def end(self):
        self.process.stdin.write("kill $(jobs -p) 2>/dev/null; wait; exit\n")
        self.process.stdin.close()
        try:
            self.process.wait(LIMIT)
        finally:
            self.process.kill()
            os.close(self.status)
            os.close(self.told)


class Appliance:
    """The build's, in a root of its own, until the end of this."""

    def __init__(self, program, root, log):
        with open(log, "w", encoding="utf-8") as errors:
            self.process = subprocess.Popen([program, "up", "--root", root, "--until-stdin-closes"],
                                            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=errors, text=True)
        for line in self.process.stdout:
            if "The appliance is up" in line:
                return
        raise Failure("the appliance does not come up:\n" + pathlib.Path(log).read_text(encoding="utf-8")[-2000:])

    def end(self):
        self.process.stdin.close()
        self.process.stdout.read()
        if self.process.wait() != 0:
            raise Failure(f"the appliance ended with {self.process.returncode}")


def commands_of(block):
    """The commands of a console block, each with what is shown below it."""
    found = []
    continued = False
    for line in block.splitlines():
        if continued:
            found[-1][0] += "\n" + line
        elif line.startswith("$ "):
            found.append([line[2:], ""])
        elif found:
            found[-1][1] += line + "\n"
        else:
            raise Failure(f"nothing prints “{line}”")
        is_command = continued or line.startswith("$ ")
        continued = is_command and line.endswith("\\")
    return found


def run_script(shell, places, script):
    status, printed = shell.run(places.command(script), lambda text: True)
    if status != 0:
        raise Failure(f"status {status}:\n{script}\n--- printed\n{printed}")


def run_command(shell, places, command, shown):
    if not shown.strip():
        run_script(shell, places, command)
        return
    _, printed = shell.run(places.command(command), lambda text: bool(places.pattern(shown)[0].fullmatch(text)))
    if not places.learn(shown, printed):
        raise Failure(f"$ {command}\n--- shown\n{shown.rstrip()}\n--- printed\n{printed.rstrip()}")


def run_block(shell, places, block):
    kind, text, hidden, names = block.groups()
    if names:
        places.stand_for(names.split())
        return 0
    if hidden or kind == "sh":
        run_script(shell, places, hidden or text)
        return 0 if hidden else 1
    commands = commands_of(text)
    for command, shown in commands:
        run_command(shell, places, command, shown)
    return len(commands)


def make_checkout(folder, source, build):
    """What documents are written for: a checkout that is built. There ./dev goes straight to the tool, whose progress
    is not what they show."""
    checkout = folder / "carvoy-service"
    (checkout / "build").mkdir(parents=True)
    (checkout / "build/host").symlink_to(build)
    (checkout / "dev").write_text(
        '#!/bin/sh\ncase $1 in appliance) shift ;; esac\nexec build/host/bin/appliance "$@" 2>>"$HOME/progress"\n', encoding="utf-8")
    (checkout / "dev").chmod(0o755)
    return checkout


def marked(source):
    documents = [*sorted(source.glob("*.md")), *sorted((source / "docs").glob("*.md"))]
    return [document.relative_to(source) for document in documents if BLOCK.search(document.read_text(encoding="utf-8"))]


def run_document(document, source, build, folder):
    blocks = list(BLOCK.finditer(document.read_text(encoding="utf-8")))
    if not blocks:
        raise Failure("nothing is marked as runnable")
    checkout, root = make_checkout(folder, source, build), folder / "root"
    environment = {key: value for key, value in os.environ.items()
                   if not key.startswith(("APPLIANCE_", "CARVOY_", "DBUS_", "XDG_"))}
    environment.update(PATH=f"{build}/bin:{os.environ['PATH']}", APPLIANCE_ROOT=str(root), HOME=str(folder),
                       LANG="C.UTF-8", LC_ALL="C.UTF-8", TERM="dumb")
    appliance = Appliance(str(build / "bin/appliance"), str(root), folder / "appliance.log")
    count = 0
    try:
        shell, places = Shell(folder, checkout, environment), Places(source, checkout, root)
        try:
            for block in blocks:
                try:
                    count += run_block(shell, places, block)
                except Failure as failure:
                    line = block.string.count("\n", 0, block.start()) + 1
                    raise Failure(f"line {line}: {failure}") from None
        finally:
            shell.end()
    finally:
        appliance.end()
    return count


def main():
    source, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    failed = False
    for name in sys.argv[3:] or marked(source):
        folder = pathlib.Path(tempfile.mkdtemp(prefix="documents-"))
        try:
            count = run_document(source / name, source, build, folder)
            print(f"OK: {name}: {count} examples", flush=True)
        except Failure as failure:
            print(f"{name}: {failure}", flush=True)
            failed = True
        finally:
            shutil.rmtree(folder, ignore_errors=True)
    return failed


if __name__ == "__main__":
    sys.exit(main())
