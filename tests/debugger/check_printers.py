"""Checks GDB's views on the objects of a real process.

Starts qelDebuggerObjects.exe, which writes its own memory to a core file, so that no right to trace processes is
needed. Opens that in GDB with the program's and the DLL's symbols at the addresses that the program prints, and lets
run_transcripts.py repeat sessions. GDB must load the views by itself, from the file beside the DLL.
"""

import argparse
import os
import struct
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))


def preferred_base(path):
    """The address that the symbols of an image are for."""
    with open(path, "rb") as file:
        headers = file.read(4096)
    (at,) = struct.unpack_from("<I", headers, 0x3C)
    return struct.unpack_from("<Q", headers, at + 24 + 24)[0]


def make_core(arguments):
    """Lets the program write its core file and returns where its images lie."""
    command = ([arguments.emulator] if arguments.emulator else []) + [arguments.program]
    # By its name alone, which is the same for Windows programs and for others.
    folder, name = os.path.split(os.path.abspath(arguments.core))
    result = subprocess.run(command + [name], cwd=folder, stdout=subprocess.PIPE, text=True, check=False)
    if result.returncode != 0:
        sys.exit(f"{arguments.program} ended with {result.returncode}: {result.stdout}")
    return dict(line.split() for line in result.stdout.splitlines() if line.strip())


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True, help="qelDebuggerObjects.exe")
    parser.add_argument("--dll", required=True, help="the DLL, with qel_printers.py beside it under GDB's name")
    parser.add_argument("--emulator", help="what the program is started with")
    parser.add_argument("--gdb", default="gdb", help="the GDB to use")
    parser.add_argument("--core", required=True, help="core file to write; it is deleted when all went well")
    parser.add_argument("transcripts", nargs="+", help="files with sessions to repeat")
    arguments = parser.parse_args()

    if not os.path.exists(arguments.dll + "-gdb.py"):
        sys.exit(f"{arguments.dll}-gdb.py, the copy of debugger/qel_printers.py that GDB loads by itself, is missing")
    bases = make_core(arguments)

    command = [arguments.gdb, "-nx", "-batch", "-iex", f"set auto-load safe-path {os.path.dirname(arguments.dll)}",
               "-ex", "set width 0", "-ex", f"core-file {arguments.core}"]
    for image in (arguments.program, arguments.dll):
        offset = int(bases[os.path.basename(image)], 16) - preferred_base(image)
        command += ["-ex", f"add-symbol-file {image} -o {offset}"]
    command += ["-x", os.path.join(HERE, "run_transcripts.py")]
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "QEL_TRANSCRIPTS": os.pathsep.join(arguments.transcripts)}
    # Symbols are looked for here, not on a server.
    environment.pop("DEBUGINFOD_URLS", None)
    result = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            text=True, encoding="utf-8", env=environment, check=False)
    print(result.stdout)
    if result.returncode != 0 or "commands printed what is expected" not in result.stdout:
        print("The views follow the classes: change debugger/qel_printers.py and debugger/VarnelQELRoots.natvis with "
              f"them. The core file stays in {arguments.core}.")
        return 1
    os.remove(arguments.core)
    return 0


if __name__ == "__main__":
    sys.exit(main())
