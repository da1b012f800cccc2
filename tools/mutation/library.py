"""Compiles and links the DLL from mutated sources, in folders of its own and with the commands of the build."""
import hashlib
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import threading

LIBRARY = "VarnelQELRoots.dll"
VARIANT = "debug-output"  # the folder of the library with debug output, and of its test
# Debug information is not linked, and warnings are not asked for: neither changes the code.
NO_EXTRAS = ["-g0", "-w"]
NM = "x86_64-w64-mingw32-nm"


def output_of(command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=True, errors="replace", **options).stdout


class Commands:
    """How the build makes the objects and the DLLs: `objects` by name, `links` by folder of the DLL."""

    def __init__(self, build):
        self.objects = {}  # object -> (source, command)
        for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
            if not entry["file"].endswith(".cpp"):
                continue
            words = [word for word in shlex.split(entry["command"]) if not word.endswith("ccache")]
            name = words[words.index("-o") + 1]
            if re.search(r"(^|/)(VarnelQELRoots|qelDebugOutputVariant)\.dir/", name):
                self.objects[name] = (entry["file"], words)
        self.links = {"bin": self.link(build, "VarnelQELRoots"), VARIANT: self.link(build, "qelDebugOutputVariant")}

    @staticmethod
    def link(build, target):
        last = output_of(["ninja", "-C", build, "-t", "commands", target]).splitlines()[-1]
        return shlex.split(last.removeprefix(": && ").split(" && ")[0])


class Base:
    """A copy of everything that mutants are made from, so that work in the tree goes on beside a run."""

    def __init__(self, source, build, folder):
        self.source, self.build, self.folder = source, build, folder
        self.commands = Commands(build)
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(source / "src", folder / "src")
        shutil.copytree(source / "include", folder / "include")
        for part in ("bin", VARIANT):
            (folder / part).mkdir()
            for file in sorted((build / part).glob("*")):
                if file.suffix in (".exe", ".dll"):
                    shutil.copy2(file, folder / part)
        for link in self.commands.links.values():
            for word in link:
                if word.endswith((".obj", ".res")):
                    (folder / word).parent.mkdir(parents=True, exist_ok=True)
                    shutil.copy2(build / word, folder / word)
        self.includers = self.read_includers()
        self.digests = {}
        self.lock = threading.Lock()

    def read_includers(self):
        """For each file below src/: the objects that are made from it."""
        includers, current = {}, None
        for line in output_of(["ninja", "-C", self.build, "-t", "deps"]).splitlines():
            if not line.startswith(" "):
                current = line.split(":")[0]
            elif current in self.commands.objects:
                path = os.path.normpath(self.build / line.strip())
                if path.startswith(f"{self.source}/src/"):
                    includers.setdefault(os.path.relpath(path, self.source), set()).add(current)
        return includers

    def reach(self):
        """For each object, all objects whose code its functions may run, itself included."""
        definitions, needs = {}, {}
        objects = [name for name in self.commands.objects if "VarnelQELRoots.dir" in name]
        for name in objects:
            needs[name] = set()
            for line in output_of([NM, self.folder / name]).splitlines():
                kind, symbol = line[17:18], line[19:]
                if kind == "U":
                    needs[name].add(symbol.removeprefix("__imp_"))
                elif kind.isupper() or kind in "wv":
                    definitions.setdefault(symbol, set()).add(name)
        # startup.cpp makes the process-wide objects of all classes; who uses one of them does not run the others' code.
        direct = {name: {user for symbol in needs[name] for user in definitions.get(symbol, ())
                         if not name.endswith("/startup.cpp.obj")} for name in objects}
        self.definitions = definitions
        return {name: closure(name, direct) for name in objects}


def closure(start, direct):
    found, waiting = {start}, [start]
    while waiting:
        for name in direct[waiting.pop()] - found:
            found.add(name)
            waiting.append(name)
    return found


class Workshop:
    """A folder in which mutants of a base are built and run, one after the other."""

    def __init__(self, base, folder):
        self.base, self.folder = base, folder
        for part in ("src", "control", "mutant", "objects"):
            shutil.rmtree(folder / part, ignore_errors=True)
        shutil.copytree(base.folder / "src", folder / "src")
        # The programs beside the library as it is, and beside the mutant.
        for side in ("control", "mutant"):
            for part in ("bin", VARIANT):
                (folder / side / part).mkdir(parents=True)
                for file in (base.folder / part).iterdir():
                    os.link(file, folder / side / part / file.name)

    def digest(self, name):
        """Compiles an object and returns the digest of its code; None where it does not compile."""
        target = self.folder / "objects" / name
        target.parent.mkdir(parents=True, exist_ok=True)
        _, words = self.base.commands.objects[name]
        words = [self.moved(word) for word in words] + NO_EXTRAS
        words[words.index("-o") + 1] = str(target)
        if subprocess.run(words, cwd=self.base.build, capture_output=True, check=False).returncode != 0:
            return None
        content = target.read_bytes()
        # The header has the time of day.
        return hashlib.sha256(content[:4] + content[8:]).hexdigest()

    def moved(self, word):
        source = str(self.base.source)
        for part, place in (("src", self.folder), ("include", self.base.folder)):
            word = re.sub(rf"(^|-I|=){re.escape(source)}/{part}(?=/|$)", rf"\g<1>{place}/{part}", word)
        return word

    def original_digest(self, name):
        with self.base.lock:
            if name in self.base.digests:
                return self.base.digests[name]
        digest = self.digest(name)
        with self.base.lock:
            return self.base.digests.setdefault(name, digest)

    def compile(self, mutant, text):
        """Compiles what the mutant changes. Returns the objects whose code is another one, with the digest of all of
        them; None where one does not compile."""
        names = sorted(self.base.includers.get(mutant.file, ()))
        originals = {name: self.original_digest(name) for name in names}
        file = self.folder / mutant.file
        file.write_text(mutant.apply(text), encoding="utf-8", newline="")
        try:
            digests = {}
            for name in names:
                digests[name] = self.digest(name)
                if digests[name] is None:
                    return None
        finally:
            file.write_text(text, encoding="utf-8", newline="")
        changed = [name for name in names if digests[name] != originals[name]]
        return changed, hashlib.sha256("".join(digests[name] for name in changed).encode()).hexdigest()

    def link(self, part, changed):
        """Links the DLL in the folder `part` from the changed objects and the base's others. Its file, or None."""
        library = self.folder / "mutant" / part / LIBRARY
        library.unlink(missing_ok=True)
        words = []
        for word in self.base.commands.links[part]:
            if word in changed:
                words.append(str(self.folder / "objects" / word))
            elif word.endswith((".obj", ".res")):
                words.append(str(self.base.folder / word))
            elif not word.startswith(("-Wl,-Map=", "-Wl,--out-implib")):
                words.append(word)
        words[words.index("-o") + 1] = str(library)
        done = subprocess.run(words + ["-s"], cwd=self.folder, capture_output=True, check=False)
        return library if done.returncode == 0 else None
