"""The test programs: which there are, which code they can reach, and how one is run under Wine."""
import dataclasses
import json
import os
import pathlib
import re
import resource
import signal
import subprocess
import tempfile
import time

from mutation.library import LIBRARY, closure, output_of

# A mutant that allocates or writes without end must not take the machine with it.
MOST_MEMORY = 12 << 30
MOST_BYTES_OF_A_FILE = 1 << 30
# A program hangs that prints nothing for so many seconds, and for so many times its usual longest silence.
PATIENCE = 20
MULTIPLE = 6
UNKNOWN_SILENCE = 30.0
# What GoogleTest and runEachTestAlone() say at last.
GOOD_END = re.compile(r"^\[  PASSED  \] \d+ test|^\d+ tests, each in a process of its own: 0 failed", re.M)


@dataclasses.dataclass
class Program:
    name: str
    path: str  # below the build folder
    arguments: list
    folder: str  # of the subsystem that it tests
    environment: dict
    locks: tuple
    expected: str  # what the output has to match; empty where the exit code tells
    code_page: str = ""  # ANSI code page that it needs, empty for the usual one
    reaches: set = None  # objects
    seconds: float = UNKNOWN_SILENCE
    silence: float = UNKNOWN_SILENCE


def properties_of(test):
    return {entry["name"]: entry["value"] for entry in test.get("properties", ())}


def read_programs(build):
    """All tests of CTest that run one program of GoogleTest or one that uses the DLL and prints what it sees."""
    found = []
    # From a folder of its own: CTest would begin the log of the build folder anew, under a run that writes it.
    with tempfile.TemporaryDirectory(dir=build) as folder:
        pathlib.Path(folder, "CTestTestfile.cmake").write_text(f'subdirs("{build}")\n', encoding="utf-8")
        tests = json.loads(output_of(["ctest", "--show-only=json-v1"], cwd=folder))["tests"]
    for test in tests:
        command = test.get("command", ("",))
        code_page = command[1] if command[0].endswith("/with-code-page.sh") else ""
        at = next((i for i, word in enumerate(command[: 4 if code_page else 2]) if word.endswith(".exe")), None)
        path = os.path.relpath(command[at], build) if at is not None else ""
        if path.split("/")[0] not in ("bin", "debug-output") or not path.endswith(
                ("Test.exe", "documentationExamples.exe", "printDialogPlaces.exe")) or "qelTestKitTest" in path:
            continue
        properties = properties_of(test)
        # CTest cuts values at semicolons as well.
        entries = re.sub(r";(?!\w+=)", "\0", ";".join(properties.get("ENVIRONMENT", ()))).split(";")
        environment = dict(entry.replace("\0", ";").split("=", 1) for entry in entries if entry)
        for entry in properties.get("ENVIRONMENT_MODIFICATION", ()):
            name, value = re.fullmatch(r"(\w+)=set:(.*)", entry).groups()
            environment[name] = value
        folder = pathlib.PurePath(properties["WORKING_DIRECTORY"]).name
        expected = properties.get("PASS_REGULAR_EXPRESSION", [""])[0]
        locks = tuple(sorted(properties.get("RESOURCE_LOCK", ())))
        found.append(Program(test["name"], path, command[at + 1 :], folder, environment, locks, expected, code_page))
    return found


def names_used(binary, definitions):
    """The names of the DLL that a binary imports or, where it loads the DLL by itself, has as text."""
    listing = output_of(["x86_64-w64-mingw32-objdump", "-p", binary])
    table = re.search(rf"DLL Name: {re.escape(LIBRARY)}\n.*?\n\n", listing, re.S)
    if table is not None:
        return re.findall(r"^\s+[0-9a-f]+\s+(?:<none>|\d+)\s+(?:[0-9a-f]+\s+)?(\S+)", table.group(), re.M)
    texts = {text.decode() for text in re.findall(rb"\b_Z\w*qel\w+", binary.read_bytes())}
    return texts & definitions.keys()


def find_reach(programs, base):
    """Notes which objects of the DLL each program can reach: those behind the names that it uses, and those that the
    programs and modules use which it names."""
    reach = base.reach()
    binaries = {program.path: base.folder / program.path for program in programs}
    for file in (base.folder / "bin").iterdir():
        if file.name != LIBRARY:
            binaries[f"bin/{file.name}"] = file
    direct, helpers = {}, {}
    for path, binary in binaries.items():
        direct[path] = {other for name in names_used(binary, base.definitions)
                        for user in base.definitions.get(name, ()) for other in reach[user]}
        content = binary.read_bytes()
        helpers[path] = {other for other, file in binaries.items() if other != path
                         and (file.name.encode() in content or file.name.encode("utf-16-le") in content)}
    for program in programs:
        program.reaches = set().union(*(direct[path] for path in closure(program.path, helpers)))


@dataclasses.dataclass
class Outcome:
    how: str  # "passed", "failure", "crash" or "hang"
    tests: list  # those that failed, or the one that did not end
    seconds: float
    silence: float  # the longest

    def passed(self):
        return self.how == "passed"


def limit_process(program):
    # As run-wine.sh does.
    if "QEL_MEMORY_KB" in program.environment:
        most = int(program.environment["QEL_MEMORY_KB"]) << 10
        resource.setrlimit(resource.RLIMIT_AS, (most, most))
    resource.setrlimit(resource.RLIMIT_DATA, (MOST_MEMORY, MOST_MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (MOST_BYTES_OF_A_FILE, MOST_BYTES_OF_A_FILE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def failed_tests(output):
    """Names of the tests that failed; where none did, of the one that was begun and did not end."""
    failed = re.findall(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", output, re.M)
    if not failed:
        begun = re.findall(r"^\[ RUN      \] (\S+)", output, re.M)
        ended = set(re.findall(r"^\[(?:       OK|  SKIPPED) \] (\S+)", output, re.M))
        failed = [name for name in begun if name not in ended][-1:]
    return list(dict.fromkeys(failed))


def watch(process, output, patience):
    """Waits for a process while its output grows. Returns its exit code, None where it hangs, and the longest
    silence."""
    size, since, longest = 0, time.monotonic(), 0.0
    while True:
        try:
            code = process.wait(0.05)
        except subprocess.TimeoutExpired:
            code = None
        now = time.monotonic()
        longest = max(longest, now - since)
        if code is not None or now - since > patience:
            return code, longest
        if os.fstat(output.fileno()).st_size != size:
            size, since = os.fstat(output.fileno()).st_size, now


def run(program, side, environment, test=""):
    """Runs a program of the folder `side`: all of its tests, or the one named."""
    command = ["wine", str(side / program.path), *program.arguments]
    if not program.expected:
        command += ["--gtest_fail_fast", "--gtest_color=no"]
        command += [f"--gtest_filter={test}"] if test else []
    # One of its own: tests make files in it, with names that are unique in one Wine.
    directory = pathlib.Path(environment["HOME"]) / "tests" / program.name
    directory.mkdir(parents=True, exist_ok=True)
    begin = time.monotonic()
    with tempfile.TemporaryFile(dir=environment["HOME"]) as output:
        process = subprocess.Popen(
            command, cwd=directory, env={**environment, **program.environment}, stdin=subprocess.DEVNULL,
            stdout=output, stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=lambda: limit_process(program))
        try:
            code, silence = watch(process, output, PATIENCE + MULTIPLE * program.silence)
        finally:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
        output.seek(0)
        said = output.read().decode("utf-8", "replace").replace("\r", "")
    if code is None:
        how = "hang"
    elif program.expected:
        how = "passed" if re.search(program.expected, said) else "failure"
    elif code == 0:
        # Wine says 0 as well for a process that a stack overflow has ended.
        how = "passed" if GOOD_END.search(said) else "crash"
    else:
        how = "failure" if code == 1 else "crash"
    return Outcome(how, [] if how == "passed" else failed_tests(said), time.monotonic() - begin, silence)
