"""Makes the lists of one build out of its DLL, its debug information and the public headers."""

from dwarf import Dwarf
from image import Image
from lists import export_lines, slot_lines, type_lines
from model import Class
from names import readable
from program_database import Pdb

DLL = "VarnelQELRoots.dll"
POINTER_SIZE = 8
PURE = ("__cxa_pure_virtual", "_purecall")


class Build:
    """Works for both ABIs; what differs is where the debug information is and how a virtual table looks."""

    def __init__(self, folder, headers):
        self._image = Image(folder / DLL)
        self.exports = self._image.exports()
        self.abi = "mingw" if any(export.name.startswith("_Z") for export in self.exports) else "visualcpp"
        self.spelled = readable([export.name for export in self.exports])
        debug, symbols = self._debug_information(folder)
        self.types = self._reachable(debug.types_of(headers))
        self._names_at = self._index(symbols)

    def _debug_information(self, folder):
        """The reader of types, and name and address of every symbol."""
        if self.abi == "visualcpp":
            pdb = Pdb(folder / DLL.replace(".dll", ".pdb"))
            return pdb, pdb.symbols(self._image)
        # Split off the DLL, or still in it.
        split = folder / (DLL + ".debug")
        image = Image(split) if split.exists() else self._image
        return Dwarf(image), image.symbols()

    def lists(self):
        return {"exports": export_lines(self.exports, self.spelled), "types": type_lines(self.types),
                "virtual-slots": slot_lines(self._virtual_tables())}

    def _reachable(self, types):
        """All types that are no templates, and those templates that occur in them or in the exported names."""
        templates = {name for name in types if "<" in name and not name.rpartition("::")[2].startswith("<")}
        found = {name: types[name] for name in types if name not in templates}
        texts = [self.spelled[export.name] for export in self.exports]
        for known in found.values():
            if isinstance(known, Class):
                texts += [member.type for member in known.members] + [text for _, text in known.statics]
        while texts:
            text = texts.pop()
            # One without members is a policy: no object of it is ever passed.
            for name in [name for name in templates if name in text and types[name].members]:
                templates.remove(name)
                found[name] = types[name]
                texts += [member.type for member in types[name].members]
        return found

    # Virtual tables

    def _index(self, symbols):
        """Names by address: the exported ones, or where there are none all others."""
        exported, others = {}, {}
        for export in self.exports:
            exported.setdefault(export.address, []).append(export.name)
        for name, address in symbols:
            others.setdefault(address, []).append(name)
        return {**others, **exported}

    def _virtual_tables(self):
        at = {self._class_of_table(self.spelled[export.name]): export for export in self.exports if not export.is_code}
        relocated = self._image.relocated()
        tables = {}
        for name, found in self.types.items():
            if isinstance(found, Class) and any(member.name == "(virtual table)" for member in found.members):
                tables[name] = self._table(found, at.get(name), relocated)
        return tables

    @staticmethod
    def _class_of_table(spelled):
        if spelled.startswith("vtable for "):
            return spelled[len("vtable for "):]
        if spelled.endswith("::`vftable'"):
            return spelled[:-len("::`vftable'")]
        return None

    def _table(self, found, export, relocated):
        """Declaration and function of each slot; from the debug information alone where no table is exported."""
        if export is None:
            return [(found.virtuals[slot], "left to derived classes") for slot in sorted(found.virtuals)]
        # GCC's begins with two entries that are no functions.
        address = export.address + (2 * POINTER_SIZE if export.name.startswith("_Z") else 0)
        slots = []
        while self._is_function(address, relocated) or len(slots) <= max(found.virtuals, default=-1):
            slots.append(self._slot(found, len(slots), address, relocated))
            address += POINTER_SIZE
        return slots

    def _is_function(self, address, relocated):
        return address in relocated and self._image.section_of(self._image.pointer_at(address)).is_code

    def _slot(self, found, slot, address, relocated):
        if not self._is_function(address, relocated):
            # GCC leaves out the destructors of abstract classes: nobody can call them through this table.
            return found.virtuals.get(slot, "destructor"), "none"
        function = self._function(self._image.pointer_at(address), found.name)
        return self._declaration(found, slot, function), function

    def _function(self, address, class_name):
        names = sorted(self._names_at.get(address, []))
        if any(name in PURE for name in names):
            return "pure virtual"
        spelled = readable(names)
        own = [name for name in names if spelled[name].startswith(class_name + "::")]
        return next(iter(own or names), "(no name)")

    @staticmethod
    def _declaration(found, slot, function):
        if slot in found.virtuals:
            return found.virtuals[slot]
        spelled = readable([function])[function]
        return spelled[len(found.name) + 2:] if spelled.startswith(found.name + "::") else spelled
