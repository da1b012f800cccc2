"""Says what a difference between two sets of lists means for hosts."""

from collections import namedtuple

# `breaks` tells whether a host that was built before has to be built again.
Change = namedtuple("Change", "breaks text reason")


def changes(old, new):
    """Everything that differs between two dictionaries of lists, as they are written in the files."""
    return (_export_changes(old["exports"], new["exports"]) + _type_changes(old["types"], new["types"]) +
            _slot_changes(old["virtual-slots"], new["virtual-slots"]))


def blocks(lines):
    """The lines of a list as a dictionary from each block's name to its head and the lines below it."""
    found = {}
    for line in lines:
        if line.startswith(" "):
            found[name][1].append(line.strip())
        else:
            name = line.partition(": size ")[0]
            found[name] = (line, [])
    return found


def _export_changes(old, new):
    old, new = (dict(reversed(line.rpartition(" = ")[::2]) for line in lines) for lines in (old, new))
    gone = {decorated: declared for decorated, declared in old.items() if decorated not in new}
    added = {declared: decorated for decorated, declared in new.items() if decorated not in old}
    found = []
    for decorated, declared in gone.items():
        loader = f"Hosts that use it do not start: the loader misses {decorated}."
        if declared in added:
            found.append(Change(True, f"other result or access: {declared}, now {added.pop(declared)}", loader))
        else:
            found.append(Change(True, f"no longer exported: {declared}", loader))
    found += [Change(False, f"newly exported: {declared}", "Hosts built before do not know it.") for declared in added]
    return found


def _type_changes(old, new):
    old, new = blocks(old), blocks(new)
    found = []
    for name, (head, lines) in old.items():
        if name not in new:
            found.append(Change(True, f"no longer there: {name}", "Hosts may hold objects or values of it."))
            continue
        if new[name][0] != head:
            found.append(Change(True, f"was {head}, is {new[name][0].rpartition(': ')[2]}",
                                "Hosts reserve and pass what they were built with."))
        found += (_value_changes if name.startswith("enum ") else _member_changes)(name, lines, new[name][1])
    found += [Change(False, f"new: {name}", "Hosts built before do not know it.") for name in new if name not in old]
    return found


def _value_changes(name, old, new):
    old, new = (dict(reversed(line.split(" ")) for line in lines) for lines in (old, new))
    found = [Change(True, f"{name}: {value} was {number}, is {new.get(value, 'gone')}",
                    "The number is compiled into hosts.")
             for value, number in old.items() if new.get(value) != number]
    found += [Change(False, f"{name}: new value {value} = {number}", "But hosts may now receive it.")
              for value, number in new.items() if value not in old]
    return found


def _member_changes(name, old, new):
    old, new = map(_members, (old, new))
    found = []
    for member, place in old.items():
        if member not in new:
            other = next((other for other in new if other not in old and new[other] == place and
                          not other.startswith("static ")), None)
            if other:
                found.append(Change(False, f"{name}: {member} is now called {other}",
                                    "Only sources that name it have to be changed."))
                new.pop(other)
            else:
                found.append(Change(True, f"{name}: {member} is gone", "Inline code in hosts may use it."))
        elif new[member] != place:
            found.append(Change(True, f"{name}: {member} was {place}, is {new[member]}",
                                "Hosts look for it where it was."))
    return found + [_new_member(name, member, place) for member, place in new.items() if member not in old]


def _new_member(name, member, place):
    if member.startswith("static "):
        return Change(False, f"{name}: new {member} of type {place}", "Hosts built before do not know it.")
    return Change(True, f"{name}: new member {member} at {place}",
                  "Hosts make objects without it, and derived classes may have put their own there.")


def _members(lines):
    """Offset, size and type of each member by its name; base classes, which have none, by their type."""
    found = {}
    for line in lines:
        if line.startswith("static "):
            name, _, found[name] = line.partition(": ")
            continue
        offset, size, rest = line.split(" ", 2)
        name, _, type_name = rest.partition(": ")
        if name == "(base class)":
            name = f"base class {type_name}"
        found[name] = f"{offset} {size} {type_name}".strip()
    return found


def _slot_changes(old, new):
    old, new = blocks(old), blocks(new)
    found = [Change(True, f"{name}: no virtual table any more", "Hosts call through it.")
             for name in old if name not in new]
    found += [Change(name.rpartition(' ')[2] in old, f"{name}: a virtual table", "Hosts built before do not know it.")
              for name in new if name not in old]
    for name in old:
        if name in new:
            found += _table_changes(name, old[name][1], new[name][1])
    return found


def _table_changes(name, old, new):
    found = [Change(True, f"{name}: slot {was.split(' ', 1)[0]} was {was.split(' ', 1)[1]}, is "
                    f"{new[slot].split(' ', 1)[1] if slot < len(new) else 'gone'}", "Hosts call what stands in a slot.")
             for slot, was in enumerate(old) if new[slot:slot + 1] != [was]]
    found += [Change(True, f"{name}: new slot {line}", "Classes in hosts that derive from it have their own there.")
              for line in new[len(old):]]
    return found
