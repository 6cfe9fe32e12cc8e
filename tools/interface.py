"""Prints the binary interface of a library: exported functions and variables; and of the types in public headers the
sizes, members, and virtual functions (with the destructor) in their order. For gdb, with the headers' paths in the
environment variable HEADERS. Exits with status 1 when the library has no debug information."""

import os
import re
import subprocess
import traceback

import gdb

OURS = re.compile(r"(?:HC|ZR|zr::|hcbase::)\w+<")


def exported(file):
    """The names of strong symbols; of weak ones there are as many as the compiler does not inline."""
    lines = subprocess.run(["nm", "-D", "--defined-only", file], capture_output=True, text=True, check=True).stdout
    return sorted(name for _, kind, name in map(str.split, lines.splitlines()) if kind not in "WVu")


def public_types(headers):
    """The types that public headers define, without instances of templates, by name."""
    types = {}
    is_public = False
    for line in gdb.execute("info types .", to_string=True).splitlines():
        if line.startswith("File "):
            is_public = line[len("File "):-1].endswith(tuple("/" + header for header in headers))
        elif is_public and (found := re.fullmatch(r"\d+:\s+.*?([\w:]+);", line)) and "<" not in line:
            described = gdb.lookup_type(found[1])
            if described.code != gdb.TYPE_CODE_NAMESPACE:
                types[found[1]] = described
    return types


def with_instances(types):
    """Also the instances of the library's own templates that are members."""
    found = dict(types)
    pending = list(types.values())
    while pending:
        for field in fields(pending.pop()):
            name = str(field.type.unqualified())
            name = re.sub(r"^(?:class|struct) ", "", name)
            if OURS.match(name) and field.type.code == gdb.TYPE_CODE_STRUCT and name not in found:
                found[name] = field.type.unqualified()
                pending.append(field.type)
    return sorted(found.items())


def fields(described):
    return described.fields() if described.code in (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION) else []


def print_symbol(symbol):
    name = subprocess.run(["c++filt", symbol], capture_output=True, text=True, check=True).stdout.strip()
    if re.match(r"vtable for |typeinfo ", name):
        print(name)
    else:
        described = gdb.execute(f"whatis '{name}'", to_string=True).strip().removeprefix("type = ")
        print(name + ":", described.split("(")[0].strip() if "(" in name else described)  # c++filt gives no result


def print_fields(described, offset=0):
    for field in fields(described):
        if not hasattr(field, "bitpos"):
            print(f"       static {field.type} {field.name}, size {field.type.sizeof}")
        elif field.name is None:
            print_fields(field.type, offset + field.bitpos // 8)
        else:
            print(f"{offset + field.bitpos // 8:6} {field.type} {field.name}, size {field.type.sizeof}")


def print_virtual_functions(name):
    try:
        lines = gdb.execute("ptype " + name, to_string=True).splitlines()
    except gdb.error:  # gdb does not find private nested types by their names
        return
    for line in map(str.strip, lines):
        if line.startswith(("virtual ", "~")):
            print("       " + line)


def print_type(name, described):
    print()
    if described.code == gdb.TYPE_CODE_TYPEDEF:
        print(f"{name}: {described.strip_typedefs()}")
        return
    print(f"{name}: size {described.sizeof}, alignment {described.alignof}")
    if described.code == gdb.TYPE_CODE_ENUM:
        for field in described.fields():
            print(f"{field.enumval:6} {field.name}")
    print_fields(described)
    print_virtual_functions(name)


def main():
    gdb.execute("set width 0")
    types = public_types(os.environ["HEADERS"].split())
    if not types:
        raise RuntimeError("no debug information")
    for symbol in exported(gdb.objfiles()[0].filename):
        print_symbol(symbol)
    for name, described in with_instances(types):
        print_type(name, described)


try:
    main()
except BaseException:  # gdb itself would end with status 0
    traceback.print_exc()
    gdb.execute("quit 1")
