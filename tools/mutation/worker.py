"""Judges mutants, one after the other: builds each and runs the test programs that can reach it."""
import contextlib
import json
import os
import pathlib
import shutil
import signal
import subprocess
import threading

from mutation import library, programs

KEEPER = pathlib.Path(__file__).with_name("keep-wine.sh")
HIVES = ("system.reg", "user.reg", "userdef.reg")


class Wine:
    """A Wine of its own: prefix, server and display."""

    def __init__(self, folder, code_page=""):
        self.folder = folder
        self.settings = {**os.environ, "QEL_CODE_PAGE": code_page} if code_page else None
        self.keeper = None
        self.environment = {}
        self.start()

    def start(self):
        # Ctrl-C reaches it through its input, which ends with this process.
        self.keeper = subprocess.Popen([KEEPER, self.folder], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                       stderr=subprocess.PIPE, start_new_session=True, env=self.settings)
        said = self.keeper.stdout.read().decode()
        if not said.endswith("ready=1\0"):
            raise RuntimeError(f"Wine did not start in {self.folder}: {self.keeper.stderr.read().decode()}")
        self.environment = dict(entry.split("=", 1) for entry in said.split("\0") if "=" in entry)
        if not (self.folder / HIVES[0]).exists():
            self.copy_hives(self.folder / "wine", self.folder)

    def copy_hives(self, source, target):
        for name in HIVES:
            shutil.copy2(source / name, target / name)

    def renew(self):
        """Starts it again with the registry that it began with: a test that was cut off does not clean up."""
        self.end()
        self.copy_hives(self.folder, self.folder / "wine")
        self.start()

    def end(self):
        self.keeper.stdin.close()
        try:
            self.keeper.wait(60)
        except subprocess.TimeoutExpired:
            self.keeper.send_signal(signal.SIGTERM)
            self.keeper.wait()
        self.keeper.stderr.close()
        self.keeper.stdout.close()


class Usual:
    """The usual times of the programs, kept from run to run."""

    def __init__(self, file, all_programs):
        self.file, self.programs, self.lock = file, all_programs, threading.Lock()
        known = json.loads(file.read_text(encoding="utf-8")) if file.exists() else {}
        for program in all_programs:
            program.seconds, program.silence = known.get(program.name, (program.seconds, program.silence))

    def note(self, program, outcome):
        with self.lock:
            program.seconds, program.silence = outcome.seconds, outcome.silence
            known = {program.name: (program.seconds, program.silence) for program in self.programs}
            self.file.write_text(json.dumps(known, indent=1), encoding="utf-8")


class Worker:
    """One core's share. `locks` are those of what the tests of all workers share beside Wine."""

    def __init__(self, base, folder, all_programs, usual, locks, seen):
        self.programs, self.usual, self.locks, self.seen = all_programs, usual, locks, seen
        self.workshop = library.Workshop(base, folder)
        self.folder = folder
        self.wines = {}  # by code page
        self.last_killer = {}  # by file: what found its last mutant is likely to find the next one

    def end(self):
        for wine in self.wines.values():
            wine.end()

    def wine(self, program):
        """The Wine for a program, which is started when it is first needed."""
        page = program.code_page
        if page not in self.wines:
            self.wines[page] = Wine(self.folder / f"code-page-{page}" if page else self.folder, page)
        return self.wines[page]

    def judge(self, mutant, text):
        """What became of a mutant: its verdict, and which tests found it in what way."""
        compiled = self.workshop.compile(mutant, text)
        if compiled is None:
            return {"verdict": "broken"}
        changed, digest = compiled
        if not changed or not self.seen.setdefault(digest, mutant.identity()) == mutant.identity():
            return {"verdict": "same"}
        if self.workshop.link("bin", changed) is None:
            return {"verdict": "broken"}
        linked = {"bin"}
        for program in self.order(mutant, changed):
            part = program.path.split("/")[0]
            if part not in linked:
                linked.add(part)
                if self.workshop.link(part, changed) is None:
                    return {"verdict": "broken"}
            outcome = self.examine(program)
            if not outcome.passed():
                self.last_killer[mutant.file] = program.name
                return {"verdict": "killed", "by": program.name, "how": outcome.how, "tests": outcome.tests[:3]}
        return {"verdict": "survived"}

    def order(self, mutant, changed):
        """The programs that can reach the change: the likely ones first, then the subsystem's own, fast ones first, and
        at last those that need another code page."""
        folder = mutant.file.split("/")[1]
        can = [program for program in self.programs
               if folder == "module" or not program.reaches.isdisjoint(changed)
               or program.path.startswith(library.VARIANT)]
        likely = self.last_killer.get(mutant.file)
        return sorted(can, key=lambda program: (program.name != likely, program.code_page != "",
                                                program.folder != folder, program.seconds))

    def run(self, program, side, test=""):
        with contextlib.ExitStack() as held:
            for name in program.locks:
                held.enter_context(self.locks.setdefault(name, threading.Lock()))
            return programs.run(program, self.workshop.folder / side, self.wine(program).environment, test)

    def examine(self, program):
        """Runs a program with the mutant. Only what fails again, and does not fail without the mutant, counts."""
        if program.silence == programs.UNKNOWN_SILENCE:
            self.run_control(program)
        for _ in range(3):
            outcome = self.run(program, "mutant")
            if outcome.passed():
                self.usual.note(program, outcome)
                return outcome
            self.clean_up(program, outcome)
            # The first alone: some programs run each of their tests in a process of its own.
            test = (outcome.tests or [""])[0]
            again = self.run(program, "mutant", test)
            if again.passed():
                test = ""
                again = self.run(program, "mutant")
            self.clean_up(program, again)
            if not again.passed() and self.run(program, "control", test).passed():
                return outcome
            self.wine(program).renew()
            self.run_control(program)
        raise RuntimeError(f"{program.name} passes at one time and fails at another")

    def clean_up(self, program, outcome):
        """Of a test that was cut off, processes and registry values may be left."""
        if outcome.how == "hang" or (outcome.how == "crash" and program.locks):
            self.wine(program).renew()

    def run_control(self, program):
        """Runs a program with the library as it is, which has to pass."""
        for _ in range(2):
            outcome = self.run(program, "control")
            if outcome.passed():
                self.usual.note(program, outcome)
                return
            self.wine(program).renew()
        raise RuntimeError(f"{program.name} fails without a mutant: {outcome.how} {outcome.tests}")
