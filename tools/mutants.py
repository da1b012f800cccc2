#!/usr/bin/env python3
"""Makes mutants of the library by seed, and runs the tests on each.

A mutant is the library with one small change in its sources. A test that fails has found it: the mutant is killed. One
that survives all tests that can reach it shows a test that is missing, or changes nothing that can be seen; those are
listed, each with the reason, in tests/mutants/equivalent.txt. What does not compile, or compiles to code that was there
before, is replaced by another.

Which mutants are made depends on the seed and on the lines that they change, so a change elsewhere leaves them alone.
Results are kept in build/mutants/results.jsonl, and a mutant of a file that has not changed is not run again.

Needs a build with its tests. Works on a copy of it, so that builds may go on beside a run.
"""
import argparse
import hashlib
import json
import pathlib
import re
import sys
import threading
import time

sys.dont_write_bytecode = True

from mutation import library, places, programs, worker  # noqa: E402

SOURCE = pathlib.Path(__file__).resolve().parent.parent
EQUIVALENT = SOURCE / "tests/mutants/equivalent.txt"
DEMANDED = 98.0  # percent of the mutants that are not equivalent
LEAST_SHARE = 0.02  # of all mutants, for each folder


def digest(text):
    return hashlib.sha256(text.encode()).hexdigest()[:16]


class Sources:
    """The mutants of all files, by folder and in the order of the seed."""

    def __init__(self, root, seed, only, match):
        self.texts, self.mutants, lines = {}, {}, {}
        for path in sorted((root / "src").glob("*/*")):
            if path.suffix in (".cpp", ".h"):
                file = str(path.relative_to(root))
                text = path.read_text(encoding="utf-8")
                self.texts[file] = text
                folder = path.parent.name
                lines[folder] = lines.get(folder, 0) + places.code_lines(text)
                self.mutants.setdefault(folder, []).extend(places.mutants_of(file, text))
        self.all = [mutant for mutants in self.mutants.values() for mutant in mutants]
        for folder in list(self.mutants):
            chosen = [mutant for mutant in self.mutants[folder] if re.search(match, str(mutant))]
            chosen.sort(key=lambda mutant: digest(f"{seed}\n{mutant.identity()}"))
            self.mutants[folder] = chosen
            if only not in ("", folder) or not chosen:
                del self.mutants[folder]
        self.lines = {folder: lines[folder] for folder in self.mutants}

    def quotas(self, count):
        """How many mutants of each folder: by its lines of code, and none without some."""
        least = max(1, round(count * LEAST_SHARE)) if len(self.lines) <= count else 0
        total = sum(self.lines.values())
        quotas = {folder: max(least, round(count * lines / total)) for folder, lines in self.lines.items()}
        # The largest folder takes the rest.
        largest = max(self.lines, key=self.lines.get)
        quotas[largest] += count - sum(quotas.values())
        return quotas


class Equivalents:
    """The list of mutants that change nothing that can be seen."""

    def __init__(self, file):
        self.entries = {}
        for block in file.read_text(encoding="utf-8").split("\n\n"):
            lines = [line for line in block.splitlines() if not line.startswith("#")]
            if not lines:
                continue
            if len(lines) < 4 or ": " not in lines[0] + " " or lines[1][:2] != "- " or lines[2][:2] != "+ ":
                sys.exit(f"{file.name}: this is no entry with a reason:\n{block}")
            place, _, function = lines[0].partition(":")
            self.entries[(place, function.strip(), lines[1][2:], lines[2][2:])] = False

    def has(self, mutant):
        key = (mutant.file, mutant.function, mutant.before, mutant.after)
        return key in self.entries

    def stale(self, mutants):
        keys = {(mutant.file, mutant.function, mutant.before, mutant.after) for mutant in mutants}
        return [key for key in self.entries if key not in keys]


class Results:
    """What became of mutants, one JSON object a line; the last one of a mutant counts."""

    def __init__(self, file, fresh):
        self.file, self.lock, self.records = file, threading.Lock(), {}
        if fresh:
            file.unlink(missing_ok=True)
        if file.exists():
            for line in file.read_text(encoding="utf-8").splitlines():
                record = json.loads(line)
                self.records[record["mutant"]] = record

    def find(self, mutant, text):
        record = self.records.get(digest(mutant.identity()))
        return record if record is not None and record["text"] == digest(text) else None

    def add(self, mutant, text, record):
        record = {"mutant": digest(mutant.identity()), "text": digest(text), "place": str(mutant), **record}
        with self.lock:
            self.records[record["mutant"]] = record
            with self.file.open("a", encoding="utf-8") as out:
                out.write(json.dumps(record) + "\n")
        return record


class Run:
    """The mutants of one run: hands them out to workers and gathers what becomes of them."""

    def __init__(self, sources, quotas, equivalents, results, options):
        self.sources, self.quotas, self.equivalents = sources, quotas, equivalents
        self.results, self.options = results, options
        self.waiting = {folder: list(reversed(sources.mutants[folder])) for folder in quotas}
        self.taken = dict.fromkeys(quotas, 0)  # of the quota: judged or being judged
        self.outcome = []  # (folder, mutant, record)
        self.lock = threading.Lock()
        self.failure = None

    def next(self):
        """The next mutant of the folder that is furthest behind, or None."""
        with self.lock:
            while self.failure is None:
                open_folders = [folder for folder, quota in self.quotas.items()
                                if self.taken[folder] < quota and self.waiting[folder]]
                if not open_folders:
                    return None
                folder = min(open_folders, key=lambda name: (self.taken[name] / self.quotas[name], name))
                mutant = self.waiting[folder].pop()
                self.taken[folder] += 1
                record = self.known(mutant)
                if record is None:
                    return folder, mutant
                self.settle(folder, mutant, record)
            return None

    def known(self, mutant):
        if self.equivalents.has(mutant) and not self.options.equivalent:
            return {"verdict": "equivalent"}
        record = self.results.find(mutant, self.sources.texts[mutant.file])
        again = record is not None and (record["verdict"] == "survived" and self.options.again)
        return None if again else record

    def settle(self, folder, mutant, record):
        if record["verdict"] in ("broken", "same"):
            self.taken[folder] -= 1
        elif record["verdict"] == "survived" and self.equivalents.has(mutant):
            record = {**record, "verdict": "equivalent"}
        self.outcome.append((folder, mutant, record))

    def work(self, make_worker):
        crew = None
        try:
            while (task := self.next()) is not None:
                crew = crew or make_worker()
                folder, mutant = task
                text = self.sources.texts[mutant.file]
                begin = time.monotonic()
                record = crew.judge(mutant, text)
                record["seconds"] = round(time.monotonic() - begin, 1)
                record = self.results.add(mutant, text, record)
                with self.lock:
                    self.settle(folder, mutant, record)
                    self.show(mutant, record)
        except Exception as failure:  # pylint: disable=broad-except
            with self.lock:
                self.failure = failure
        finally:
            if crew is not None:
                crew.end()

    def show(self, mutant, record):
        if record["verdict"] in ("broken", "same"):
            return
        count = sum(1 for _, _, other in self.outcome if other["verdict"] not in ("broken", "same"))
        found = f"  [{record['how']} in {record['by']}: {', '.join(record['tests'])}]" if "by" in record else ""
        print(f"{count:4} {record['verdict']:9} {record['seconds']:6.1f} s  {mutant}{found}", flush=True)


def percentage(part, whole):
    """With one decimal, rounded down."""
    return (1000 * part // whole) / 10


def report(run):
    """Prints the table and the survivors. Returns whether enough were killed."""
    counts = {folder: {} for folder in run.quotas}
    hangs = 0
    for folder, _, record in run.outcome:
        counts[folder][record["verdict"]] = counts[folder].get(record["verdict"], 0) + 1
        hangs += record.get("how") == "hang"
    columns = ("killed", "survived", "equivalent", "same", "broken")
    print(f"\n{'folder':12}" + "".join(f"{column:>12}" for column in columns))
    for folder, count in sorted(counts.items()):
        print(f"{folder:12}" + "".join(f"{count.get(column, 0):12}" for column in columns))
    total = {column: sum(count.get(column, 0) for count in counts.values()) for column in columns}
    print(f"{'all':12}" + "".join(f"{total[column]:12}" for column in columns))
    survivors = [mutant for _, mutant, record in run.outcome if record["verdict"] == "survived"]
    for mutant in sorted(survivors, key=str):
        print(f"\nsurvived: {mutant.file}:{mutant.line}: {mutant.function} ({mutant.kind})\n- {mutant.before}\n"
              f"+ {mutant.after}")
    wrong = [mutant for _, mutant, record in run.outcome
             if record["verdict"] == "killed" and run.equivalents.has(mutant)]
    for mutant in wrong:
        print(f"\nlisted as equivalent, but killed: {mutant}")
    different = total["killed"] + total["survived"]
    share = percentage(total["killed"], different) if different else 100.0
    print(f"\nfigures: {different + total['equivalent']} mutants: {total['killed']} killed ({hangs} by hanging), "
          f"{total['survived']} survived, {total['equivalent']} equivalent: {share:.1f} % of those that change "
          f"behaviour are found")
    return share >= DEMANDED and not wrong


def options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=SOURCE / "build/linux-mingw-release",
                        help="the build folder")
    parser.add_argument("--count", type=int, default=500, help="how many mutants (500)")
    parser.add_argument("--seed", default="1", help="which of all mutants (1)")
    parser.add_argument("--jobs", type=int, default=2, help="how many at a time (2)")
    parser.add_argument("--only", default="", metavar="FOLDER", help="only those of src/FOLDER")
    parser.add_argument("--match", default="", metavar="REGEX", help="only those whose line of --list matches")
    parser.add_argument("--again", action="store_true", help="run those again that survived")
    parser.add_argument("--equivalent", action="store_true", help="run those as well that are listed as equivalent")
    parser.add_argument("--fresh", action="store_true", help="forget all results first")
    parser.add_argument("--folder", type=pathlib.Path, default=SOURCE / "build/mutants",
                        help="where mutants are built and results are kept")
    parser.add_argument("--list", action="store_true", help="print the mutants in their order, and run none")
    return parser.parse_args()


def main():
    chosen = options()
    equivalents = Equivalents(EQUIVALENT)
    if chosen.list:
        sources = Sources(SOURCE, chosen.seed, chosen.only, chosen.match)
        for mutants in sources.mutants.values():
            for mutant in mutants:
                print(f"{'equivalent: ' if equivalents.has(mutant) else ''}{mutant}")
        return 0

    folder = chosen.folder.resolve()
    folder.mkdir(parents=True, exist_ok=True)
    base = library.Base(SOURCE, chosen.build.resolve(), folder / "base")
    sources = Sources(base.folder, chosen.seed, chosen.only, chosen.match)
    if not sources.mutants:
        sys.exit("there is no such mutant")
    for place, function, before, after in equivalents.stale(sources.all):
        print(f"no longer a mutant: {place}: {function}\n- {before}\n+ {after}")
    everything = programs.read_programs(chosen.build.resolve())
    programs.find_reach(everything, base)
    usual = worker.Usual(folder / "times.json", everything)
    results = Results(folder / "results.jsonl", chosen.fresh)
    run = Run(sources, sources.quotas(chosen.count), equivalents, results, chosen)

    locks, seen = {}, {}
    crews = [threading.Thread(target=run.work, args=(lambda number=number: worker.Worker(
        base, folder / f"worker{number}", everything, usual, locks, seen),)) for number in range(chosen.jobs)]
    for crew in crews:
        crew.start()
    try:
        for crew in crews:
            crew.join()
    except KeyboardInterrupt:
        run.failure = KeyboardInterrupt()
        for crew in crews:
            crew.join()
    if run.failure is not None:
        print(f"mutants.py: {run.failure!r}; what has been found so far:", file=sys.stderr)
        report(run)
        return 2
    return 0 if report(run) else 1


if __name__ == "__main__":
    sys.exit(main())
