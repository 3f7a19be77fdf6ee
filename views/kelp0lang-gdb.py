"""Values of kelp0lang as gdb shows them: text as text, not as a pointer.

gdb loads this file by itself beside the library (libkelp0lang.so.*-gdb.py); by hand:

  (gdb) source kelp0lang-gdb.py
  (gdb) print name
  $1 = "Monte Bianco"

What is read is the program's memory alone: nothing of the program is called, so a core file serves.
"""

import gdb
import gdb.printing


class Text:
    """kelp::String and kelp::WString: a pointer to the units, with their count before them."""

    UNITS = {"kelp::String": ("char", "UTF-8"), "kelp::WString": ("char16_t", "UTF-16LE")}

    def __init__(self, value):
        self.value = value

    def to_string(self):
        unit, encoding = self.UNITS[self.value.type.strip_typedefs().unqualified().name]
        header = gdb.lookup_type("kelp::detail::TextHeader").pointer()
        text = self.value["m_text"]
        length = int((text.cast(header) - 1)["length"])
        if length < 0:
            return "not a text"
        return text.cast(gdb.lookup_type(unit).pointer()).lazy_string(encoding, length)

    def display_hint(self):
        return "string"


class PolyValue:
    """kelp::CPolyValue: the value of its kind."""

    NO_DATE = (1 << 63) - 1

    def __init__(self, value):
        self.value = value

    def to_string(self):
        kind = str(self.value["m_type"].cast(gdb.lookup_type("kelp::enumPolyValueType")))
        kind = kind.rsplit("::", 1)[-1]
        held = self.value["m_value"]
        if kind == "pvEmpty":
            return "empty"
        if kind == "pvString":
            return held["text"].dereference()
        if kind == "pvDate":
            date = int(held["date"])
            return "no date" if date == self.NO_DATE else "date %d" % date
        members = {"pvBool": "boolean", "pvInt32": "int32", "pvDouble": "real",
                   "pvArray": "array", "pvInt64": "int64", "pvPointer": "pointer"}
        return held[members[kind]] if kind in members else "unknown kind " + kind


class File:
    """kelp::CFile: its path."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        try:
            return self.value["m_sPath"]
        except gdb.error:
            # Where the library has no debug information, no other program's describes this class;
            # the path stands behind the table of its virtual functions.
            byte = gdb.lookup_type("char").pointer()
            place = self.value.address.cast(byte) + byte.sizeof
            return place.cast(gdb.lookup_type("kelp::WString").pointer()).dereference()


class UnitSystem:
    """CMeasUnitSystem: its settings by their names."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "unit system"

    def children(self):
        fields = self.value["m_fields"]["_M_elems"]
        for field in gdb.lookup_type("CMeasUnitSystem::Field").fields():
            name = field.name.rsplit("::", 1)[-1]
            if name != "Count":
                yield name, fields[field.enumval]["m_value"]["_M_i"]


def printers():
    found = gdb.printing.RegexpCollectionPrettyPrinter("kelp0lang")
    found.add_printer("text", "^kelp::W?String$", Text)
    found.add_printer("value", "^kelp::CPolyValue$", PolyValue)
    found.add_printer("file", "^kelp::CFile$", File)
    found.add_printer("units", "^CMeasUnitSystem$", UnitSystem)
    return found


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
