"""Shows the library's texts in gdb as text:  (gdb) source tools/debugger/kpx_gdb.py"""

import gdb
import gdb.printing


def utf16(address, length):
    data = gdb.selected_inferior().read_memory(address, 2 * length).tobytes()
    return data.decode("utf-16-le", errors="surrogatepass")


class CStringPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        text = self.value["text_"]
        return utf16(int(text["_M_dataplus"]["_M_p"]), int(text["_M_string_length"]))

    def display_hint(self):
        return "string"


class MarkupTextPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        text = self.value["text_"]
        return utf16(int(text["_M_str"]), int(text["_M_len"]))

    def display_hint(self):
        return "string"


class ElemPosPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        lengths = int(self.value["tagLengths"])
        level = int(self.value["levelAndFlags"])
        return (f"[{int(self.value['start'])} +{int(self.value['length'])}] tags "
                f"{lengths & 0x3fffff}/{lengths >> 22} level {level & 0xffff} "
                f"flags {level & 0xffff0000:#x} parent {int(self.value['parent'])} "
                f"child {int(self.value['firstChild'])} next {int(self.value['next'])} "
                f"previous {int(self.value['previous'])}")


def build_printers():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("KpxBaseObjects")
    printers.add_printer("CString", "^kpx::(CString|CKpxString)$", CStringPrinter)
    printers.add_printer("MCD_CSTR", "^kpx::MCD_CSTR$", MarkupTextPrinter)
    printers.add_printer("ElemPos", "^kpx::ElemPos$", ElemPosPrinter)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build_printers(), replace=True)
