"""Lets gdb show the records, events, containers and registries of ZRLib. Texts and arrays: hcbase-gdb.py."""

import gdb
import gdb.printing
import gdb.types

MESSAGE_TYPES = {1: "OUT", 2: "WARNING", 4: "ERROR", 8: "TRACE"}

EVENTS = {
    0x8004: "ZR_EVENT_PROGRESS_START",
    0x8005: "ZR_EVENT_PROGRESS_RANGE",
    0x8006: "ZR_EVENT_PROGRESS_TEXT_VISIBLE",
    0x8007: "ZR_EVENT_PROGRESS_UPDATE",
    0x8008: "ZR_EVENT_PROGRESS_END",
    0x8009: "ZR_EVENT_THREADING_ENABLED",
    0x8064: "ZR_EVENT_MESSAGES_ENABLED",
    0x8065: "ZR_EVENT_MESSAGE",
    0x82BD: "ZR_EVENT_LOCK_TRAIL",
    0x8320: "ZR_EVENT_PROFILER_ENABLED",
    0x8321: "ZR_EVENT_PROFILER_STATE",
}


def plain(value):
    """What lies in a zr::Relaxed or std::atomic: its first member, or that of its base, as long as there is one."""
    while value.type.strip_typedefs().code == gdb.TYPE_CODE_STRUCT:
        members = [field for field in value.type.strip_typedefs().fields() if hasattr(field, "bitpos")]
        value = value[members[0]]
    return value


def is_empty(text):
    return int(text["m_storage"]["sizes"]["length"]) == 0


class MessagePrinter:
    def __init__(self, value):
        self._value = value

    def to_string(self):
        kind = int(self._value["m_nType"])
        return MESSAGE_TYPES.get(kind, f"type {kind}")

    def children(self):
        yield "text", self._value["m_csText"]
        if not is_empty(self._value["m_csTextEx"]):
            yield "textEx", self._value["m_csTextEx"]
        yield "location", self._value["m_csLocation"]
        yield "level", self._value["m_nLevel"]
        yield "thread", self._value["m_nThreadID"]
        if int(self._value["m_nCode"]) != 0:
            yield "code", self._value["m_nCode"]
            yield "chain", int(self._value["m_bChainToPrevious"])


class StatePrinter:
    """Of a state that was never measured only the location counts."""

    def __init__(self, value):
        self._value = value

    def to_string(self):
        return "ZRProfilerState"

    def children(self):
        yield "location", self._value["m_csLocation"]
        calls = plain(self._value["m_nCalls"])
        yield "calls", calls
        if int(calls) != 0:
            for name, member in (("total", "m_dTotal"), ("self", "m_dSelf"), ("min", "m_dMin"), ("max", "m_dMax")):
                yield name, plain(self._value[member])


class EventPrinter:
    """Shows the fields that are not as the constructor leaves them."""

    NUMBERS = (("count", "m_nCount"), ("type", "m_nType"), ("state", "m_bState"), ("min", "m_nMin"), ("max", "m_nMax"))
    TEXTS = (("text", "m_csText"), ("textEx", "m_csTextEx"), ("name", "m_csName"), ("caption", "m_csCaption"))

    def __init__(self, value):
        self._value = value
        self._code = int(value["m_nCode"])

    def to_string(self):
        return EVENTS.get(self._code, f"event {self._code:#x}")

    def children(self):
        if EVENTS.get(self._code) == "ZR_EVENT_MESSAGE":
            yield "msg", self._value["m_Msg"]
        for name, member in self.TEXTS:
            if not is_empty(self._value[member]):
                yield name, self._value[member]
        for name, member in self.NUMBERS:
            if int(self._value[member]) != 0:
                yield name, int(self._value[member])
        for name, member in (("lockTrail", "m_LockTrail"), ("profilerState", "m_ProfilerState")):
            payload = self._value[member]["_M_payload"]
            if payload["_M_engaged"]:
                yield name, payload["_M_payload"]["_M_value"]


class StackPrinter:
    """From the bottom to the top."""

    def __init__(self, value):
        storage = value["m_storage"]
        self._data = storage["m_data"]
        self._count = int(min(value["m_nTop"] + 1, value["m_nCutFrom"], storage["m_size"]))

    def to_string(self):
        return f"ZRStack of length {self._count}"

    def children(self):
        return ((f"[{index}]", self._data[index]) for index in range(self._count))

    def display_hint(self):
        return "array"


def cells(ring):
    node = ring["m_head"]["next"]
    for _ in range(int(ring["m_count"])):
        yield node["cell"].dereference()
        node = node["next"]


class ListPrinter:
    def __init__(self, value):
        self._ring = value["m_ring"]

    def to_string(self):
        return f"ZRList of length {int(self._ring['m_count'])}"

    def children(self):
        return ((f"[{index}]", cell) for index, cell in enumerate(cells(self._ring)))

    def display_hint(self):
        return "array"


class MapPrinter(ListPrinter):
    def to_string(self):
        return f"ZRCodeMap of length {int(self._ring['m_count'])}"

    def children(self):
        for index, cell in enumerate(cells(self._ring)):
            yield f"[{2 * index}]", cell["first"]
            yield f"[{2 * index + 1}]", cell["second"]

    def display_hint(self):
        return "map"


class RegistryPrinter:
    def __init__(self, value):
        self._libraries = value["m_Libraries"]["m_ring"]
        self._objects = value["m_Objects"]["m_ring"]

    def to_string(self):
        return f"libraries: {int(self._libraries['m_count'])}, objects: {int(self._objects['m_count'])}"

    def children(self):
        for cell in cells(self._libraries):
            yield f"library {int(cell['first']) & 0xFFFFFFFF:#x}", cell["second"]
        for cell in cells(self._objects):
            yield f"object {int(cell['first']) & 0xFFFFFFFF:#x}", cell["second"]["m_csName"]


class HolderPrinter:
    """Shows what a zr::ModuleObject holds."""

    def __init__(self, value):
        self._object = value["object"]

    def to_string(self):
        return None

    def children(self):
        yield "object", self._object


class Collection(gdb.printing.RegexpCollectionPrettyPrinter):
    """Leaves alone what the program has no debug information of."""

    def __call__(self, value):
        kind = gdb.types.get_basic_type(value.type)
        if kind.code == gdb.TYPE_CODE_STRUCT and not kind.fields():
            return None
        return super().__call__(value)


def printers():
    collection = Collection("zrlib")
    collection.add_printer("ZRMsg", "^ZRMsg$", MessagePrinter)
    collection.add_printer("ZRProfilerState", "^ZRProfilerState$", StatePrinter)
    collection.add_printer("ZRObservedObjectEvent", "^ZRObservedObjectEvent$", EventPrinter)
    collection.add_printer("ZRStack", "^ZRStack<.*>$", StackPrinter)
    collection.add_printer("ZRList", "^ZRList<.*>$", ListPrinter)
    collection.add_printer("ZRCodeMap", "^ZRCodeMap<.*>$", MapPrinter)
    collection.add_printer("ZRObjectRegistry", "^ZRObjectRegistry$", RegistryPrinter)
    collection.add_printer("ModuleObject", "^zr::ModuleObject<.*>$", HolderPrinter)
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
