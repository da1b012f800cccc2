"""The lists of abi/: what they hold and how they are written.

One fact a line, so that a difference reads like a change: a block for each type, its members below it.
"""

from model import Class

TITLES = {
    "exports": "Exported names: kind, declaration = decorated name.",
    "types": "Public types: size, alignment; offset, size, name, type of members; static members; values.",
    "virtual-slots": "Virtual tables: slot, declaration = the function that stands there.",
}
NAMES = tuple(TITLES)
NOTE = "Read from the built DLL and its debug information by tools/abi.py, which also renews this list."


def export_lines(exports, spelled):
    return sorted(f"{'function' if export.is_code else 'data'} {spelled[export.name]} = {export.name}"
                  for export in exports)


def type_lines(types):
    return [line for _, found in sorted(types.items())
            for line in (_class_lines(found) if isinstance(found, Class) else _enumeration_lines(found))]


def _class_lines(found):
    lines = [f"class {found.name}: size {found.size}, alignment {found.alignment}"]
    for member in sorted(found.members, key=lambda member: (member.offset, member.size)):
        kind = member.name or "(base class)"
        lines.append(f"    {member.offset} +{member.size} {kind}" + (f": {member.type}" if member.type else ""))
    return lines + [f"    static {name}: {type_name}" for name, type_name in sorted(found.statics)]


def _enumeration_lines(found):
    return [f"enum {found.name}: size {found.size}, {found.underlying}",
            *(f"    {value} {name}" for name, value in found.values)]


def slot_lines(tables):
    """`tables` has, for each class, a list of declaration and decorated name."""
    lines = []
    for name, slots in sorted(tables.items()):
        lines.append(f"class {name}")
        lines.extend(f"    {slot} {declared} = {function}" for slot, (declared, function) in enumerate(slots))
    return lines


def write(folder, lists):
    folder.mkdir(parents=True, exist_ok=True)
    for name, lines in lists.items():
        text = "\n".join([f"# {TITLES[name]}", f"# {NOTE}", "", *lines, ""])
        (folder / f"{name}.txt").write_text(text, encoding="utf-8", newline="\n")


def read(folder):
    return {name: read_lines(folder / f"{name}.txt") for name in NAMES}


def read_lines(path):
    """The lines of a list without comments and empty ones."""
    lines = path.read_text(encoding="utf-8").splitlines()
    return [line for line in lines if line.strip() and not line.startswith("#")]
