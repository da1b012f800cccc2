"""What the lists of the two ABIs have in common, and what may set them apart.

Names that one compiler makes and the other does not (virtual tables, run-time type information, variants of
constructors and destructors) are left out on both sides.
"""

import re

from changes import blocks
from names import common

# Members that a compiler writes by itself. Visual C++ exports them with their class, GCC leaves them to each host.
IMPLICIT = re.compile(r"(?:\w+::)*(\w+)::(?:~?\1|operator=)\((?:\1(?: const&|&&))?\)")


def disagreements(mingw, visual_cpp, visual_cpp_only):
    """A line for each thing that hosts of one ABI have and hosts of the other do not, or have differently.

    `visual_cpp_only` names the exports that are known to be missing with MinGW.
    """
    return (_of_exports(_declared(mingw["exports"]), _declared(visual_cpp["exports"]), set(visual_cpp_only)) +
            _of_types(blocks(mingw["types"]), blocks(visual_cpp["types"])) +
            _of_order(blocks(mingw["virtual-slots"]), blocks(visual_cpp["virtual-slots"])))


def _declared(lines):
    """Kind and declaration of every export that could be the same for both compilers."""
    declared = set()
    for line in lines:
        kind, _, name = line.rpartition(" = ")[0].partition(" ")
        if common(name):
            declared.add(f"{kind} {common(name)}")
    return declared


def _of_exports(mingw, visual_cpp, known):
    found = [f"exported with MinGW only: {name}" for name in sorted(mingw - visual_cpp)]
    more = {name for name in visual_cpp - mingw if not IMPLICIT.fullmatch(name.partition(" ")[2])}
    found += [f"exported with Visual C++ only: {name}" for name in sorted(more - known)]
    found += [f"listed as exported with Visual C++ only, but it is not: {name}" for name in sorted(known - more)]
    return found


def _of_types(mingw, visual_cpp):
    found = []
    for name in sorted(mingw.keys() | visual_cpp.keys()):
        if name in mingw and name in visual_cpp:
            found += _of_type(name, *mingw[name], *visual_cpp[name])
        elif any(lines for _, lines in (types[name] for types in (mingw, visual_cpp) if name in types)):
            # Without members it is a mere tag, which a compiler may forget once it has served.
            found.append(f"{name} is known with {'MinGW' if name in mingw else 'Visual C++'} only")
    return found


def _of_type(name, mingw_head, mingw_lines, head, lines):
    found = []
    if mingw_head != head:
        found.append(f"{name}: with MinGW {mingw_head.rpartition(': ')[2]}; with Visual C++ {head.rpartition(': ')[2]}")
    found += [f"{name}: with MinGW only: {line}" for line in mingw_lines if line not in lines]
    found += [f"{name}: with Visual C++ only: {line}" for line in lines if line not in mingw_lines]
    return found


def _of_order(mingw, visual_cpp):
    """The slots themselves differ: GCC's tables have two of them for a destructor, Visual C++'s one."""
    found = []
    for name in sorted(mingw.keys() | visual_cpp.keys()):
        orders = [_functions(tables[name][1]) if name in tables else [] for tables in (mingw, visual_cpp)]
        if orders[0] != orders[1]:
            found.append(f"{name}: virtual functions are {', '.join(orders[0]) or 'none'} with MinGW, "
                         f"{', '.join(orders[1]) or 'none'} with Visual C++")
    return found


def _functions(slots):
    declared = [slot.partition(" ")[2].rpartition(" = ")[0] for slot in slots]
    return [name for name in declared if "~" not in name and name != "destructor"]
