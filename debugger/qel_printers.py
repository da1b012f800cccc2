"""GDB's views of the library's objects: texts, lists, the tree, records and managers.

GDB loads this file by itself where it lies beside the DLL as VarnelQELRoots.dll-gdb.py, in a folder of its auto-load
safe-path; elsewhere: source qel_printers.py. docs/debugging.md shows what the views look like.

The views read memory only and call nothing in the program, and they end whatever an object holds: lengths are held
against what there is, links that lead in a circle are noticed, and what cannot be read is shown as such. They read
private members and belong to the version of the library that they come with. VarnelQELRoots.natvis has the same views
under the same names.
"""

import gdb
import gdb.printing

# The greatest length of a text.
_LONGEST_TEXT = 0x80000

# Units that are shown of a text within the summary of another object.
_LONGEST_IN_SUMMARY = 80

# Entries of a tree that are counted for its summary.
_MOST_COUNTED = 1000

_PAGE = 4096


class _Unreadable(Exception):
    """Says what is wrong with an object, in the words that are shown for it."""


def _words_for(error):
    """What is shown for an object that could not be read."""
    if isinstance(error, _Unreadable):
        return str(error)
    words = str(error).rstrip(".")
    if "There is no member" in words:
        words += ": the symbols of the DLL are missing or of another version"
    return "<%s>" % words


class _Details(gdb.Parameter):
    """Whether texts are shown with length, share count and narrow form, and entries of a tree with their links."""

    set_doc = "Set whether texts and entries of a tree are shown with details."
    show_doc = "Show whether texts and entries of a tree are shown with details."

    def __init__(self):
        super().__init__("print qel-details", gdb.COMMAND_DATA, gdb.PARAM_BOOLEAN)
        self.value = False

    def get_set_string(self):
        return ""

    def get_show_string(self, value):
        return "Details of texts and of entries of a tree are shown: %s." % value


def _details_are_on():
    return bool(gdb.parameter("print qel-details"))


def _read(address, size):
    return bytes(gdb.selected_inferior().read_memory(address, size))


def _address(pointer):
    return int(pointer) & 0xFFFFFFFFFFFFFFFF


def _number(enumerator):
    """The number of an enumeration that leaves its values to the callers."""
    return int(enumerator.cast(gdb.lookup_type("int")))


def _units(pointer, most=_LONGEST_TEXT):
    """The 16-bit units before the terminator, at most that many, as bytes. Reads no page behind the terminator's."""
    start = _address(pointer)
    if start == 0:
        raise _Unreadable("<null>")
    if start % 2 != 0:
        raise _Unreadable("<no text at 0x%x>" % start)
    text = b""
    while len(text) < 2 * most:
        at = start + len(text)
        block = _read(at, _PAGE - at % _PAGE)
        units = memoryview(block).cast("H").tolist()
        if 0 in units:
            text += block[:2 * units.index(0)]
            break
        text += block
    return text[:2 * most]


def _data_of(text):
    """The pointer to the units of a qelString."""
    representation = text["m_rep"]
    if _address(representation) == 0:
        raise _Unreadable("<no representation>")
    return representation["m_data"]


def _quoted(text):
    """A qelString within the summary of another object."""
    try:
        units = _units(_data_of(text), _LONGEST_IN_SUMMARY + 1)
    except (_Unreadable, gdb.error) as error:
        return _words_for(error)
    cut = len(units) > 2 * _LONGEST_IN_SUMMARY
    plain = units[:2 * _LONGEST_IN_SUMMARY].decode("utf-16-le", "backslashreplace")
    escaped = "".join("\\" + c if c in "\\\"" else c if c.isprintable() else c.encode("unicode_escape").decode()
                      for c in plain)
    charset = gdb.target_charset()
    try:
        escaped = escaped.encode(charset, "backslashreplace").decode(charset)
    except LookupError:
        escaped = escaped.encode("ascii", "backslashreplace").decode()
    return '"%s"%s' % (escaped, "..." if cut else "")


def _counted(count, noun, nouns=None):
    return "%d %s" % (count, noun if count == 1 else nouns or noun + "s")


class _Text:
    """A text; `data` finds the pointer to its units."""

    def __init__(self, value, data):
        self._value = value
        self._length = None
        try:
            pointer = data(value)
            self._length = len(_units(pointer)) // 2
            # The encoding is named because GDB takes wchar_t for what it is on the machine that GDB runs on.
            self._shown = pointer.lazy_string("UTF-16LE", length=self._length)
            self.display_hint = lambda: "string"
        except (_Unreadable, gdb.error) as error:
            self._shown = _words_for(error)
        if self._length is not None and _details_are_on():
            self.children = self._children

    def to_string(self):
        return self._shown


class TextPrinter(_Text):
    """qelString"""

    def __init__(self, value):
        super().__init__(value, _data_of)

    def _children(self):
        yield "[length]", self._length
        yield "[shared by]", self._value["m_rep"]["m_refCount"]
        yield "[narrow form]", self._value["m_charCache"]


class RepresentationPrinter(_Text):
    """qelStringRepr"""

    def __init__(self, value):
        super().__init__(value, lambda representation: representation["m_data"])

    def _children(self):
        yield "[length]", self._length
        yield "[shared by]", self._value["m_refCount"]


def _elements_of(array):
    """Number of elements of a qelArray, and the pointer to the first one."""
    logical = int(array["m_logicalLength"])
    physical = int(array["m_physicalLength"])
    elements = array["m_elements"]
    count = max(logical, 0)
    if physical < 0 or count > physical or (physical > 0 and _address(elements) == 0):
        raise _Unreadable("<no array: length %d, physical length %d, elements at 0x%x>"
                          % (logical, physical, _address(elements)))
    if count > 0:
        size = elements.type.target().sizeof
        _read(_address(elements), size)
        _read(_address(elements) + (count - 1) * size, size)
    return count, elements


class ArrayPrinter:
    """qelArray of anything"""

    def __init__(self, value):
        self._value = value

    def to_string(self):
        try:
            _elements_of(self._value)
        except (_Unreadable, gdb.error) as error:
            return _words_for(error)
        return "length %d, physical length %d, grow length %d" % tuple(
            int(self._value[name]) for name in ("m_logicalLength", "m_physicalLength", "m_growLength"))

    def display_hint(self):
        return "array"

    def children(self):
        try:
            count, elements = _elements_of(self._value)
        except (_Unreadable, gdb.error):
            return
        for i in range(count):
            yield "[%d]" % i, (elements + i).dereference()


class StringClassArrayPrinter:
    """qelStringClassArray"""

    def __init__(self, value):
        self._array = value["m_array"]

    def to_string(self):
        if _address(self._array) == 0:
            return "<no list>"
        return ArrayPrinter(self._array.dereference()).to_string()

    def display_hint(self):
        return "array"

    def children(self):
        return ArrayPrinter(self._array.dereference()).children()


def _whole(entry):
    """The record that an entry of a tree is a part of, or the entry alone where the record's class is not known."""
    try:
        return entry.cast(entry.dynamic_type).dereference()
    except gdb.error:
        return entry.dereference()


def _entries_below(root):
    """The entries below a link, in ascending order."""
    waiting = []
    seen = set()
    at = root
    while True:
        while _address(at) != 0:
            if _address(at) in seen:
                raise _Unreadable("<met twice: the entry at 0x%x>" % _address(at))
            seen.add(_address(at))
            _read(_address(at), at.type.target().sizeof)
            waiting.append(at)
            at = at["m_left"]
        if not waiting:
            return
        entry = waiting.pop()
        yield entry
        at = entry["m_right"]


class TreePrinter:
    """qelBalancedTree"""

    def __init__(self, value):
        self._value = value

    def to_string(self):
        count = 0
        try:
            for _ in _entries_below(self._value["m_root"]):
                count += 1
                if count > _MOST_COUNTED:
                    return "more than %d entries" % _MOST_COUNTED
        except (_Unreadable, gdb.error) as error:
            return "<no tree> %s" % _words_for(error)
        return _counted(count, "entry", "entries")

    def display_hint(self):
        return "array"

    def children(self):
        try:
            for position, entry in enumerate(_entries_below(self._value["m_root"])):
                yield "[%d]" % position, _whole(entry)
        except (_Unreadable, gdb.error):
            return


class EntryPrinter:
    """qelBalancedTreeEntry, the part of a record that a tree links"""

    def __init__(self, value):
        self._value = value
        if _details_are_on():
            self.children = self._children

    def to_string(self):
        return self._value["m_weight"]

    def _children(self):
        yield "[left]", self._value["m_left"]
        yield "[right]", self._value["m_right"]


class _View:
    """An object with a summary and named parts."""

    def __init__(self, value):
        self._value = value

    def to_string(self):
        try:
            return self.summary(self._value)
        except (_Unreadable, gdb.error) as error:
            return _words_for(error)

    def children(self):
        try:
            yield from self.parts(self._value)
        except gdb.error:
            return


class ProcessInfoPrinter(_View):
    """ProcessInfo"""

    def summary(self, info):
        return "%s, %d %%" % (_quoted(info["action"]), int(info["percent"]))

    def parts(self, info):
        yield "key", info["key"]
        yield "percent", info["percent"]
        yield "action", info["action"]


class ProcessEvolutionManagerPrinter(_View):
    """qelProcessEvolutionManager"""

    def summary(self, manager):
        return "processes %d, displays %d%s" % (int(manager["m_processes"]["m_logicalLength"]),
                                                int(manager["m_displays"]["m_logicalLength"]),
                                                ", cancelled" if manager["m_isCanceled"] else "")

    def parts(self, manager):
        yield "[processes]", manager["m_processes"]
        yield "[displays]", manager["m_displays"]
        yield "[action texts]", manager["m_actions"]
        yield "[cancelled]", manager["m_isCanceled"]
        yield "[cancel enabled]", manager["m_cancelEnabled"]
        yield "[cancel allowed]", manager["m_cancelAllowed"]


class ProgressCtrlWindowPrinter(_View):
    """qelProgressCtrlWindow"""

    def summary(self, window):
        return "%s, %d %%, %s, %s" % (_quoted(window["m_title"]), int(window["m_percentage"]),
                                      "on" if window["m_on"] else "off",
                                      "active" if window["m_activity"] else "not active")

    def parts(self, window):
        yield "[title]", window["m_title"]
        yield "[percentage]", window["m_percentage"]
        yield "[on]", window["m_on"]
        yield "[active]", window["m_activity"]


class ProgressCtrlWindowControllerPrinter(_View):
    """qelProgressCtrlWindowController"""

    def summary(self, controller):
        return "windows %d" % int(controller["m_windows"]["m_logicalLength"])

    def parts(self, controller):
        yield "[windows]", controller["m_windows"]
        yield "[built-in window]", controller["m_defaultWindow"]


class ThreadsPoolPrinter(_View):
    """qelThreadsPool"""

    def summary(self, pool):
        return "workers %d, %s%s" % (int(pool["m_threadCount"]),
                                     "tasks pending" if _address(pool["m_taskList"]) else "no tasks pending",
                                     ", waited for" if pool["m_stopRequested"] else "")

    def parts(self, pool):
        yield "[workers]", pool["m_threadCount"]
        yield "[waited for]", pool["m_stopRequested"]
        # Ends with an error of GDB where a node cannot be read, or where nobody knows what nodes are made of.
        at = pool["m_taskList"]
        seen = set()
        while _address(at) != 0 and _address(at) not in seen:
            task = at["task"]
            task.fetch_lazy()
            yield "[%d]" % len(seen), task
            seen.add(_address(at))
            at = at["next"]


class IncrementalCounterSettingsPrinter(_View):
    """StructIncrementalCounter"""

    def summary(self, settings):
        return "from %s, characters %d from %s" % (_quoted(settings["startValue"]), int(settings["range"]),
                                                   _quoted(settings["firstCharacter"]))

    def parts(self, settings):
        yield "userValue", settings["userValue"]
        yield "userText", settings["userText"]
        yield "startValue", settings["startValue"]
        yield "firstCharacter", settings["firstCharacter"]
        yield "range", settings["range"]
        yield "excludedCharacters", settings["excludedCharacters"]
        yield "maxCount", settings["maxCount"]
        yield "extraText", settings["extraText"]


class IncrementalCounterPrinter(_View):
    """qelIncrementalCounter"""

    def summary(self, counter):
        return "%s, steps %d" % (_quoted(counter["m_counterString"]), int(counter["m_callCount"]))

    def parts(self, counter):
        yield "[code]", counter["m_counterString"]
        yield "[steps]", counter["m_callCount"]
        yield "[settings]", counter["m_data"]
        yield "[digits only]", counter["m_numericOnly"]


class NumberingDataRangePrinter(_View):
    """StructNumberingDataRange"""

    def summary(self, symbols):
        return "symbols %d from %s" % (int(symbols["symbolCount"]), _quoted(symbols["firstSymbol"]))

    def parts(self, symbols):
        yield "rangeValue", symbols["rangeValue"]
        yield "rangeName", symbols["rangeName"]
        yield "firstSymbol", symbols["firstSymbol"]
        yield "symbolCount", symbols["symbolCount"]
        yield "defaultStart", symbols["defaultStart"]
        yield "rangeText", symbols["rangeText"]


class NumberCreatorPrinter(_View):
    """qelNumberCreator"""

    def summary(self, creator):
        return "next %s %s %s" % (_quoted(creator["m_prefix"]), _quoted(creator["m_current"]),
                                  _quoted(creator["m_suffix"]))

    def parts(self, creator):
        yield "[prefix]", creator["m_prefix"]
        yield "[next running code]", creator["m_current"]
        yield "[suffix]", creator["m_suffix"]
        yield "[start]", creator["m_start"]
        yield "[type]", _number(creator["m_numberingType"])
        yield "[range]", creator["m_dataRange"]


class DataSourcePrinter(_View):
    """qelDataSource"""

    def summary(self, source):
        return "%s for %s" % (_quoted(source["m_Name"]), _quoted(source["m_Platform"]))

    def parts(self, source):
        yield "[name]", source["m_Name"]
        yield "[platform]", source["m_Platform"]
        yield "[connection string]", source["m_ConnectionString"]


class DataSourcesUtilitiesPrinter(_View):
    """qelDataSourcesUtilities; an object holds nothing, and what is shown belongs to the process"""

    def summary(self, _):
        return "state of the process"

    def parts(self, _):
        # By name: the debug information of a program that does not use these members does not have them.
        for label, name in (("[data sources]", "m_DataSources"), ("[installed drivers]", "m_InstalledOdbcDrivers")):
            yield label, gdb.parse_and_eval("qelDataSourcesUtilities::" + name).referenced_value()
        path = gdb.parse_and_eval("qelDataSourcesUtilities::m_pDatabaseConfigurationFilePath")
        yield "[configuration file]", path.dereference() if _address(path) else path


class DebugInfoPrinter(_View):
    """qelDebugInterfaces::DebugInfo"""

    def summary(self, info):
        return "%s at 0x%x%s" % (_quoted(info["className"]), _address(info["object"]),
                                 ", destroyed" if info["destroyed"] else "")

    def parts(self, info):
        yield "initiator", info["initiator"]
        yield "className", info["className"]
        yield "object", info["object"]
        yield "destroyed", info["destroyed"]


class FileAccessPrinter(_View):
    """qelFileAccess"""

    def summary(self, file):
        return "%s, %s" % ("open" if _address(file["m_stream"]) else "closed", file["m_encoding"])

    def parts(self, file):
        # As an address: what a stream is made of is the C runtime's, and another one's in the next process.
        yield "[stream]", file["m_stream"].cast(gdb.lookup_type("void").pointer())
        yield "[encoding]", file["m_encoding"]


class LogfilePrinter(_View):
    """qelLogfile"""

    def summary(self, log):
        return _quoted(log["m_fileName"])

    def parts(self, log):
        yield "[file name]", log["m_fileName"]
        yield "[stream]", log["m_stream"].cast(gdb.lookup_type("void").pointer())


class PerfMonitorPrinter(_View):
    """qelPerfMonitor"""

    def summary(self, monitor):
        return "%s, start %d ms, end %d ms" % (_quoted(monitor["m_log"]["m_fileName"]), int(monitor["m_startTicks"]),
                                               int(monitor["m_endTicks"]))

    def parts(self, monitor):
        yield "[log]", monitor["m_log"]
        yield "[start in ms]", monitor["m_startTicks"]
        yield "[end in ms]", monitor["m_endTicks"]


class RegExWrapperPrinter(_View):
    """qelRegExWrapper"""

    def summary(self, wrapper):
        return _quoted(wrapper["m_pattern"])

    def parts(self, wrapper):
        yield "[pattern]", wrapper["m_pattern"]


class ZClippingPrinter(_View):
    """qelZClipping"""

    def summary(self, clipping):
        return "mode %d, limits %s and %s" % (_number(clipping["m_mode"]), clipping["m_first"], clipping["m_second"])

    def parts(self, clipping):
        yield "[mode]", _number(clipping["m_mode"])
        yield "[first limit]", clipping["m_first"]
        yield "[second limit]", clipping["m_second"]


class ProfTypeDSTVValuesPrinter(_View):
    """qelProfTypeDSTVValues; its dimensions but those that are 0"""

    def summary(self, section):
        return str(section["m_DSTVType"])

    def parts(self, section):
        yield "[type]", section["m_DSTVType"]
        for field in section.type.strip_typedefs().fields():
            if field.name not in ("m_DSTVType", "m_reserved") and float(section[field.name]) != 0.0:
                yield field.name[len("m_"):], section[field.name]


_PRINTERS = {
    "qelString": TextPrinter,
    "qelStringRepr": RepresentationPrinter,
    "qelArray<.*>": ArrayPrinter,
    "qelStringClassArray": StringClassArrayPrinter,
    "qelBalancedTree": TreePrinter,
    "qelBalancedTreeEntry": EntryPrinter,
    "ProcessInfo": ProcessInfoPrinter,
    "qelProcessEvolutionManager": ProcessEvolutionManagerPrinter,
    "qelProgressCtrlWindow": ProgressCtrlWindowPrinter,
    "qelProgressCtrlWindowController": ProgressCtrlWindowControllerPrinter,
    "qelThreadsPool": ThreadsPoolPrinter,
    "StructIncrementalCounter": IncrementalCounterSettingsPrinter,
    "qelIncrementalCounter": IncrementalCounterPrinter,
    "StructNumberingDataRange": NumberingDataRangePrinter,
    "qelNumberCreator": NumberCreatorPrinter,
    "qelDataSource": DataSourcePrinter,
    "qelDataSourcesUtilities": DataSourcesUtilitiesPrinter,
    "qelDebugInterfaces::DebugInfo": DebugInfoPrinter,
    "qelFileAccess": FileAccessPrinter,
    "qelLogfile": LogfilePrinter,
    "qelPerfMonitor": PerfMonitorPrinter,
    "qelRegExWrapper": RegExWrapperPrinter,
    "qelZClipping": ZClippingPrinter,
    "qelProfTypeDSTVValues": ProfTypeDSTVValuesPrinter,
}


def _register():
    name = "VarnelQELRoots"
    if not any(getattr(printer, "name", None) == name for printer in gdb.pretty_printers):
        _Details()
    collection = gdb.printing.RegexpCollectionPrettyPrinter(name)
    for type_name, printer in _PRINTERS.items():
        collection.add_printer(type_name, "^%s$" % type_name, printer)
    # For every program, since a host has the library's types in its own debug information as well. A second copy that
    # is loaded takes the place of the first.
    gdb.printing.register_pretty_printer(None, collection, replace=True)


_register()
