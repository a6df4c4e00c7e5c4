# How GDB shows the library's types. GDB loads this by itself, as it stands beside the library under
# the name of the library's file and "-gdb.py", once the folder is on its list of safe ones:
#     add-auto-load-safe-path <folder>        in ~/.gdbinit
import gdb
import gdb.printing

MEANINGS = {
    0x00041000: "initialised",
    0x80004005: "failed",
    0x8004102E: "a required pointer is null",
    0x8004102F: "not available",
    0x80360001: "already present",
    0x80360002: "not found",
}


def result_text(value):
    number = int(value) & 0xFFFFFFFF
    if number >> 16 == 0x8007 and number & 0xFFFF:
        meaning = "system error %d" % (number & 0xFFFF)
    else:
        meaning = MEANINGS.get(number, "failed" if number >> 31 else "succeeded")
    return "%s (0x%08X)" % (meaning, number)


def text_of(pointer):
    return pointer.string() if int(pointer) else "(null)"


def exception_text(value):
    origin = value["m_origin"]
    text = result_text(origin["result"])
    message = value["m_message"].format_string(raw=False)
    if message != '""':
        text += ": " + message
    if int(origin["line"]):
        text += " [%s:%d]" % (text_of(origin["file"]), int(origin["line"]))
    return text


def id_text(value):
    words = "".join("%08x" % int(value["m_words"][i]) for i in range(4))
    return "-".join(words[a:b] for a, b in ((0, 8), (8, 12), (12, 16), (16, 20), (20, 32)))


def counted_text(value):
    pointee = value["m_pointee"]
    if not int(pointee):
        return "null"
    count = int(pointee["m_refCount"]["_M_i"])
    return "%d reference%s of %s" % (count, "" if count == 1 else "s", pointee.format_string())


def component_text(value):
    face = value["m_face"]
    return face.format_string(symbols=True) if int(face) else "null"


def key_text(value):
    return "%s %s" % (value["m_root"], value["m_path"].format_string())


class Printer:
    def __init__(self, value, show):
        self.value, self.show = value, show

    def to_string(self):
        try:
            return self.show(self.value)
        except (gdb.error, RuntimeError) as error:
            return "<%s>" % error


class Printers(gdb.printing.PrettyPrinter):
    # By the names without template arguments; the first is that of a type's alias.
    SHOWN = {
        "QSResult": result_text,
        "QSException": exception_text,
        "UID": id_text,
        "iqsID": lambda value: text_of(value["m_text"]),
        "iqs_ptr": counted_text,
        "iqs_const_ptr": counted_text,
        "LTLib::ComponentPtr": component_text,
        "LTLib::Key": key_text,
    }

    def __init__(self):
        super().__init__("ltlib")

    def __call__(self, value):
        for name in (value.type.unqualified().name, value.type.unqualified().strip_typedefs().name):
            show = self.SHOWN.get((name or "").split("<")[0])
            if show:
                return Printer(value, show)
        return None


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
