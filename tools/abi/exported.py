"""Which names the library means to export: those of declarations that carry QEL_API in the public headers."""

import re

CLASS = re.compile(r"^\s*(?:class|struct) QEL_API (\w+)", re.MULTILINE)
FUNCTION_OR_DATA = re.compile(r"^\s*QEL_API\s[^;({]*?(\w+)\s*[(;]", re.MULTILINE)
NAMESPACE = re.compile(r"^namespace (\w+)", re.MULTILINE)


class Declared:
    def __init__(self, folder):
        self.classes, self.others = set(), set()
        for header in folder.glob("*.h"):
            text = header.read_text(encoding="utf-8")
            names = set(FUNCTION_OR_DATA.findall(text))
            self.classes.update(CLASS.findall(text))
            self.others.update(names, *({f"{scope}::{name}" for name in names} for scope in NAMESPACE.findall(text)))

    def unmeant(self, spelled):
        """The exported names, as decorated: readable, that belong to no marked declaration."""
        return {decorated: name for decorated, name in spelled.items() if not self._is_meant(name)}

    def _is_meant(self, name):
        name = re.sub(r"^(vtable for|typeinfo for) (.*)$", r"\2::", name)
        whole = name.partition("(")[0].partition(" [")[0]
        return whole in self.others or whole.rpartition("::")[0] in self.classes
