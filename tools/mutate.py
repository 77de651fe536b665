#!/usr/bin/env python3
"""Changes src/ in one place at a time and sees whether a test notices.

A copy of the tree is built once, and all its tests must pass. Then each mutant is built there: first the test
program of its room, then the others, until a test fails. Results are appended to results.jsonl in the work
folder, so that an interrupted run goes on where it was; the same seed and tree give the same mutants.
"""

import argparse
import collections
import hashlib
import json
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
MEMORY = pathlib.Path("/dev/shm")
GIBIBYTE = 1 << 30
PYTHON = "python"
CODE_LINE = re.compile(r"[\w)]")
NO_CODE = re.compile(r"\s*(#|using |namespace |static_assert|template|class |struct |friend |public:|private:|extern )")
LITERAL = re.compile(r'"(?:\\.|[^"\\])*"|(?<!\w)\'(?:\\.|[^\'\\])+\'|//.*')
DECLARATION = re.compile(r"(const |auto |std::)[^=!<>]*=[^=]|;")
RELATIONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&"}


def closing(text, start):
    """Where the parenthesis that opens at `start` closes; -1: not on this line."""
    depth = 0
    for at in range(start, len(text)):
        depth += (text[at] == "(") - (text[at] == ")")
        if depth == 0:
            return at
    return -1


def negations(text, _):
    for match in re.finditer(r"\b(?:if|while) \(", text):
        start, end = match.end() - 1, closing(text, match.end() - 1)
        if end > 0 and not DECLARATION.search(text[start + 1 : end]):
            yield start + 1, end, lambda old: "!(" + old + ")"


def relations(text, _):
    for match in re.finditer(r" (<|<=|>|>=|==|!=|&&|\|\|) ", text):
        yield match.start(1), match.end(1), RELATIONS.__getitem__


def constants(text, _):
    def changed(old):
        if old in ("true", "false"):
            return "false" if old == "true" else "true"
        number = re.fullmatch(r"(0[xX])?([0-9A-Fa-f]+)(.*)", old)
        value = int(number[2], 16 if number[1] else 10) + 1
        return (f"0x{value:X}" if number[1] else str(value)) + number[3]

    for match in re.finditer(r"(?<![\w.])(?:0[xX][0-9A-Fa-f]+U?|\d+(?:\.\d+F?|U?)|true|false)(?![\w.'])", text):
        yield match.start(), match.end(), changed


def removed_calls(text, source):
    match = re.match(r"\s*((?:\w+(?:\(\))?(?:\.|->|::))*\w+\()", text)
    if source and match and not re.match(r"\s*(return|throw|if|for|while|switch|case)\b", text):
        end = closing(text, match.end() - 1)
        if end > 0 and text[end + 1 :].strip() == ";":
            yield match.start(1), end + 1, lambda old: "static_cast<void>(0)"


def dropped_returns(text, source):
    match = re.match(r"\s*(?:\} else )?if \(", text)
    end = closing(text, match.end() - 1) if source and match else -1
    if end > 0 and re.fullmatch(r" return\b.*;\s*", text[end + 1 :]):
        yield end + 2, len(text.rstrip()), lambda old: "{}"


def swapped_arguments(text, _):
    for match in re.finditer(r"\w\(([^(),<>{}]+), ([^(),<>{}]+)(?=[,)])", text):
        if match[1] != match[2] and not re.search(r"\w [&*]?\w", match[1]):
            yield match.start(1), match.end(2), lambda old: ", ".join(reversed(old.split(", ", 1)))


KINDS = {
    "condition negated": negations,
    "relational": relations,
    "constant": constants,
    "removed call": removed_calls,
    "dropped return": dropped_returns,
    "swapped arguments": swapped_arguments,
}


def mutants(tree, seed, rooms):
    """Endless: a line of code, one of the kinds that fit it, one of its places. No mutant comes twice."""
    lines = []
    for path in sorted((tree / "src").rglob("*")):
        if path.suffix not in (".cpp", ".h") or (rooms and path.relative_to(tree).parts[1] not in rooms):
            continue
        for number, line in enumerate(path.read_text().splitlines()):
            # Of the same length, without what must not be changed.
            text = LITERAL.sub(lambda found: "~" * len(found[0]) if found[0][0] != "/" else "", line)
            if CODE_LINE.search(text) and not NO_CODE.match(text):
                lines.append((path.relative_to(tree), number, line, text))
    chance, seen = random.Random(seed), set()
    while True:
        path, number, line, text = chance.choice(lines)
        kinds = {name: list(find(text, path.suffix == ".cpp")) for name, find in KINDS.items()}
        kinds = {name: places for name, places in kinds.items() if places}
        if not kinds:
            continue
        kind = chance.choice(sorted(kinds))
        start, end, change = chance.choice(kinds[kind])
        new = line[:start] + change(line[start:end]) + line[end:]
        if new != line and (path, number, new) not in seen:
            seen.add((path, number, new))
            yield {"file": str(path), "line": number + 1, "kind": kind, "from": line.strip(), "to": new.strip(), "text": new}


class Bench:
    def __init__(self, work, jobs, rooms):
        self.work, self.build, self.jobs, self.rooms, self.seconds = work, work / "build", jobs, rooms, {}
        # In memory where there is such a place: the tests write many files that nobody needs to outlive them.
        self.temporary = MEMORY / f"wristlog-mutate-{os.getpid()}" if os.access(MEMORY, os.W_OK) else work / "tmp"

    def copy_tree(self):
        """Files that are equal keep their time, so that nothing is built twice."""
        names = subprocess.check_output(["git", "ls-files", "-z"], cwd=ROOT, text=True).split("\0")
        digest, kept = hashlib.sha256(), set()
        for name in filter(None, names):
            source, target = ROOT / name, self.work / name
            if not source.is_file():
                continue
            content = source.read_bytes()
            digest.update(name.encode() + b"\0" + content)
            kept.add(name)
            if not target.is_file() or target.read_bytes() != content:
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(content)
                shutil.copymode(source, target)
        for folder in ("src", "tests", "simulator", "apps", "bindings"):
            for path in (self.work / folder).rglob("*"):
                if path.suffix in (".cpp", ".h", ".py") and str(path.relative_to(self.work)) not in kept:
                    path.unlink()
        return digest.hexdigest()

    def programs(self):
        rooms = {path.parent.name for path in (self.work / "tests").glob("*/*_test.cpp")}
        if self.rooms:
            return [room + "_tests" for room in sorted(rooms) if room.startswith(tuple(self.rooms))]
        return [room + "_tests" for room in sorted(rooms)] + [PYTHON]

    def nearest_first(self, file):
        room = file.split("/")[1]
        near = {"start_up": "workflows", "engineering": "apps"}.get(room, room)
        return sorted(
            self.programs(),
            key=lambda name: (not name.startswith(near), name != "workflows_tests", self.seconds.get(name, 0), name),
        )

    def run(self, command, timeout):
        """The exit status (None: out of time) and what it said."""
        shutil.rmtree(self.temporary, ignore_errors=True)
        self.temporary.mkdir()

        def limits():
            resource.setrlimit(resource.RLIMIT_AS, (8 * GIBIBYTE, 8 * GIBIBYTE))
            resource.setrlimit(resource.RLIMIT_FSIZE, (GIBIBYTE, GIBIBYTE))

        with subprocess.Popen(
            command, cwd=self.build, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            start_new_session=True, preexec_fn=limits, env={**os.environ, "TMPDIR": str(self.temporary)},
        ) as process:
            try:
                said, _ = process.communicate(timeout=timeout)
                return process.returncode, said.decode(errors="replace")
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                said, _ = process.communicate()
                return None, said.decode(errors="replace")
            finally:
                shutil.rmtree(self.temporary, ignore_errors=True)

    def make(self, *targets):
        return self.run(["ninja", f"-j{self.jobs}", *targets], None)

    def test(self, program, timeout):
        """What failed; empty when all passed."""
        if program == PYTHON:
            command = ["ctest", "-R", "^python\\.", "--stop-on-failure", "--output-on-failure"]
        else:
            command = [str(self.build / "tests" / program), "--gtest_brief=1", "--gtest_fail_fast"]
        status, said = self.run(command, timeout)
        if status == 0:
            return ""
        failed = re.search(r"\[  FAILED  \] ([\w./]+)", said) or re.search(r"^(?:FAIL|ERROR): (\w+)", said, re.M)
        return "timeout" if status is None else failed[1] if failed else f"exit {status}"

    def target_of(self, program):
        return ["hy_wristlog", "hy_wristlog_simulator", "wristlog"] if program == PYTHON else [program]

    def baseline(self):
        start = time.time()
        (self.build).mkdir(parents=True, exist_ok=True)
        status, said = self.run(
            ["cmake", "-S", "..", "-B", ".", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-O0 -g1"], None
        )
        if status == 0:
            status, said = self.make(*(target for program in self.programs() for target in self.target_of(program)))
        if status != 0:
            sys.exit(said[-4000:] + "\nThe tree itself does not build.")
        print(f"built in {time.time() - start:.0f} s", flush=True)
        for program in self.programs():
            start = time.time()
            failed = self.test(program, 1800)
            if failed:
                sys.exit(f"Without any mutant {program} fails: {failed}")
            self.seconds[program] = time.time() - start
            print(f"  {program:24} {self.seconds[program]:6.1f} s", flush=True)

    def object_code(self, file):
        made = self.build / "CMakeFiles/wristlog_objects.dir" / (file + ".o")
        if not made.is_file():
            return None
        target = self.work / "stripped.o"
        subprocess.run(["objcopy", "--strip-debug", str(made), str(target)], check=True)
        return hashlib.sha256(target.read_bytes()).hexdigest()

    def judge(self, mutant):
        path = self.work / mutant["file"]
        whole = path.read_text()
        lines = whole.split("\n")
        lines[mutant["line"] - 1] = mutant["text"]
        before = self.object_code(mutant["file"])
        path.write_text("\n".join(lines))
        try:
            for program in self.nearest_first(mutant["file"]):
                if self.make(*self.target_of(program))[0] != 0:
                    return "did not build", program
                if before is not None and self.object_code(mutant["file"]) == before:
                    return "equivalent", ""
                failed = self.test(program, 60 + 5 * self.seconds[program])
                if failed:
                    return "killed", f"{program} {failed}"
            return "survived", ""
        finally:
            path.write_text(whole)
            if before is not None:  # else its object would stay the mutant's until the next one
                self.make(f"CMakeFiles/wristlog_objects.dir/{mutant['file']}.o")


def report(results):
    outcomes = ["killed", "survived", "equivalent", "did not build"]
    rooms = collections.defaultdict(collections.Counter)
    for result in results:
        for room in (result["file"].split("/")[1], "all"):
            rooms[room][result["outcome"]] += 1
    print(f"\n{'room':12}" + "".join(f"{name:>15}" for name in outcomes) + f"{'killed of judged':>20}")
    for room in sorted(rooms, key=lambda name: (name == "all", name)):
        judged = rooms[room]["killed"] + rooms[room]["survived"]
        share = f"{rooms[room]['killed']}/{judged}" + (f" = {100 * rooms[room]['killed'] // judged} %" if judged else "")
        print(f"{room:12}" + "".join(f"{rooms[room][name]:15}" for name in outcomes) + f"{share:>20}")
    print("\nSurvivors: gaps in the tests, or changes that mean the same, which only a reader can tell.")
    for result in results:
        if result["outcome"] == "survived":
            print(f"{result['file']}:{result['line']} {result['kind']}\n  - {result['from']}\n  + {result['to']}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=100, help="how many mutants (default 100)")
    parser.add_argument("--seed", type=int, default=20260302)
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="compilers at a time")
    parser.add_argument("--work", type=pathlib.Path, default=ROOT / "build-mutate")
    parser.add_argument("--rooms", type=lambda text: text.split(","), default=[],
                        help="mutate these folders of src/ only, and run only the test programs of their names")
    parser.add_argument("--list", action="store_true", help="tell the mutants and try none")
    parser.add_argument("--report", action="store_true", help="tell the results so far and try none")
    options = parser.parse_args()
    wanted = zip(range(options.count), mutants(ROOT, options.seed, options.rooms))
    if options.list:
        for number, mutant in wanted:
            print(f"{number} {mutant['file']}:{mutant['line']} {mutant['kind']}\n  - {mutant['from']}\n  + {mutant['to']}")
        return
    results_path = options.work.resolve() / "results.jsonl"
    if options.report:
        return report([json.loads(line) for line in results_path.read_text().splitlines()[1:]])

    options.work.mkdir(parents=True, exist_ok=True)
    bench = Bench(options.work.resolve(), options.jobs, options.rooms)
    header = {"tree": bench.copy_tree(), "seed": options.seed, "rooms": options.rooms}
    lines = results_path.read_text().splitlines() if results_path.is_file() else []
    results = []
    if lines and header.items() <= json.loads(lines[0]).items():
        bench.seconds = json.loads(lines[0])["seconds"]
        results = [json.loads(line) for line in lines[1:]]
    else:
        bench.baseline()
        results_path.write_text(json.dumps({**header, "seconds": bench.seconds}) + "\n")
    done = {result["number"] for result in results}
    for number, mutant in wanted:
        if number in done:
            continue
        start = time.time()
        outcome, by = bench.judge(mutant)
        result = {"number": number, **mutant, "outcome": outcome, "by": by, "seconds": round(time.time() - start, 1)}
        del result["text"]
        results.append(result)
        with results_path.open("a") as file:
            file.write(json.dumps(result) + "\n")
        print(f"{number} {mutant['file']}:{mutant['line']} {mutant['kind']}: {outcome} {by} ({result['seconds']} s)", flush=True)
    report(results)


if __name__ == "__main__":
    main()
