"""Holds the Python module against the committed description of the ABI, and runs what uses it.
python_test.py FOLDER_OF_THE_MODULE ABI LIBRARY FOLDER_OF_PHOTOGRAPHS"""
import ctypes, os, re, subprocess, sys

folder, abi_file, path, photographs = sys.argv[1:]
sys.path.insert(0, folder)
import lumenforge as module  # noqa: E402

RECORDS = {name: getattr(module, name) for name in ("ExifInfo", "MetadataBuf", "GpsBuf", "TifImageInfo")}
POINTERS = {"int": module.INT, "float": module.FLOAT, "char": ctypes.c_char_p, "FILE": ctypes.c_void_p,
            "void": ctypes.c_void_p, "unsigned char": ctypes.c_void_p,
            **{name: ctypes.POINTER(record) for name, record in RECORDS.items()}}
VALUES = {"int": ctypes.c_int, "unsigned int": ctypes.c_uint, "time_t": ctypes.c_long, "float": ctypes.c_float,
          "char": ctypes.c_char, "uint8_t": ctypes.c_uint8, "int32_t": ctypes.c_int32, "uint32_t": ctypes.c_uint32}


def in_python(argument):
    type_ = argument.removeprefix("const ").rpartition(" ")[0]
    return POINTERS[type_[:-1]] if type_.endswith("*") else VALUES[type_]


library = module.load(path)
abi = open(abi_file).read()
functions = re.findall(r"^(int|unsigned int) (\w+)\((.*)\);", abi, re.M)
assert len(functions) == 31 and sorted(module.FUNCTIONS) == sorted(name for _, name, _ in functions)
for result, name, arguments in functions:
    function = getattr(library, name)
    assert function.restype is VALUES[result], name
    assert list(function.argtypes) == [in_python(argument) for argument in arguments.split(", ")], name

fields = re.findall(r"^(\w+) (\d+) (\w+) (\w+)(?:\[(\d+)\])?$", abi, re.M)
for record, offset, type_, name, count in fields:
    field = getattr(RECORDS[record], name)
    expected = VALUES[type_] * int(count) if count else VALUES[type_]
    assert dict(RECORDS[record]._fields_)[name] is expected and field.offset == int(offset), (record, name)
assert sum(len(record._fields_) for record in RECORDS.values()) == len(fields)
for name, size in re.findall(r"^(\w+) (\d+)$", abi, re.M):
    assert ctypes.sizeof(getattr(module, name)) == int(size), name

shown = subprocess.run([sys.executable, "-B", f"{folder}/exposures.py", photographs], text=True, check=True,
                       env=os.environ | {"LD_LIBRARY_PATH": os.path.dirname(path)}, capture_output=True).stdout
assert shown == "'photo.jpg'  0.004 s  f/5.6  ISO 100\n", shown
