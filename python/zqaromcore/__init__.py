"""Database files of libZBXZQARomCore from Python, with NumPy arrays.

    import zqaromcore

    with zqaromcore.open("results.zdb") as f:
        for table in f.tables():
            print(table.handle, table.name, table.rows, table.fields)
        nodes = f.table("Nodes").read()          # dict of masked arrays
        x = f.table("Nodes").column("x")         # one float64 array
        u = f.array(f.table("Steps").column("displacements")[-1]).read()

A file opens from a path (plain or compressed) or a "zbxrdb://" URL. Tables
move in columns through the library's bulk path: ints as int32, floats as
float32, doubles as float64, handles as int32 and strings as str objects; a
masked element is a field that holds no data in its row. Arrays read as
rows x fields arrays of their element type; a tagged stream reads as a list
of (tag, value) pairs. Texts (string values, names, descriptions) are
UTF-8; a byte that is not part of UTF-8 reads as an escaped character
("surrogateescape") and is written back as that byte. Every error of the
library is a zqaromcore.Error, whose message names the file (also in its
filename attribute).
"""

import collections
import os

import numpy as np

from . import _zqaromcore as _core
from ._zqaromcore import DEFAULT_MAGIC, Error

__all__ = ["open", "File", "Table", "Array", "TaggedStream", "Handle", "Error", "ObjectInfo", "TableInfo",
           "ClassInfo", "DEFAULT_MAGIC"]

ObjectInfo = collections.namedtuple("ObjectInfo", "handle kind size name")
ObjectInfo.__doc__ = "An object of a file: its handle, kind ('table', 'double array', ...), bytes, a table's name."
TableInfo = collections.namedtuple("TableInfo", "handle name fields rows")
TableInfo.__doc__ = "A table of a file: its handle, name, fields ({name: type}) and number of rows."
ClassInfo = collections.namedtuple("ClassInfo", "name id version base table rows")
ClassInfo.__doc__ = ("A class of the object layer: its name, class id, version (-1 when the file records none), "
                     "base class id, the handle of its table and the table's rows.")

_INT32 = np.iinfo(np.int32)


class Handle(int):
    """The handle of an object in a file: an int that says what it is."""

    def __repr__(self):
        return "Handle(%d)" % int(self)


def open(name, mode="r", *, compressed=False, magic=DEFAULT_MAGIC, description=""):
    """Opens a database file; use it as a context manager.

    mode is "r" (read a path or a "zbxrdb://" URL), "r+" (change an existing
    file), "a" (change it, or create it when missing), "w" (create it,
    replacing any file of that name) or "x" (create it where no file is).
    A created file is plain, or compressed with compressed=True; magic (four
    characters) and description are stored in it.
    """
    return File(name, mode, compressed=compressed, magic=magic, description=description)


class File:
    """An open database file: what it holds, and the objects in it."""

    def __init__(self, name, mode="r", *, compressed=False, magic=DEFAULT_MAGIC, description=""):
        self._core = _core.File(os.fsencode(name), mode, compressed, magic, _stored(description))

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()

    def __repr__(self):
        state = ("read-only" if self.read_only else "writable") if self.is_open else "closed"
        return "<zqaromcore.File %r (%s, %s)>" % (self.name, self.kind, state)

    name = property(lambda self: self._core.name, doc="The path or URL the file was opened by.")
    kind = property(lambda self: self._core.kind, doc="'plain', 'compressed' or 'remote'.")
    description = property(lambda self: self._core.description)
    read_only = property(lambda self: self._core.read_only)
    flush_count = property(lambda self: self._core.flush_count, doc="How many flushes the file has seen.")
    is_open = property(lambda self: self._core.is_open)

    def close(self):
        """Flushes a writer and closes the file; objects taken from it can no longer be used."""
        self._core.close()

    def flush(self):
        """Writes every change so far to the file, for readers to take in."""
        self._core.flush()

    def snap(self):
        """Takes in a writer's flushes: True when the file moved on (open objects follow it)."""
        return self._core.snap()

    def objects(self):
        """Every object in handle order, as ObjectInfo."""
        return [ObjectInfo(Handle(handle), kind, size, name) for handle, kind, size, name in self._core.objects()]

    def tables(self):
        """Every table in handle order, as TableInfo."""
        return [TableInfo(Handle(handle), name, dict(fields), rows)
                for handle, name, fields, rows in self._core.tables()]

    def classes(self):
        """The object layer's classes in catalogue order, as ClassInfo; [] for a file without objects."""
        return [ClassInfo(*entry[:4], Handle(entry[4]), entry[5]) for entry in self._core.classes()]

    def table(self, which):
        """The table with that handle, or the only table of that name."""
        if isinstance(which, str):
            handles = [info.handle for info in self.objects() if info.kind == "table" and info.name == which]
            if not handles:
                raise KeyError("%s has no table %r" % (self.name, which))
            if len(handles) > 1:
                raise KeyError("%s has %d tables %r (handles %s): open one by its handle"
                               % (self.name, len(handles), which, ", ".join(map(str, handles))))
            which = handles[0]
        return Table(self._core.table(int(which)))

    def array(self, handle):
        """The array with that handle."""
        return Array(self._core.array(int(handle)))

    def stream(self, handle):
        """The tagged stream with that handle."""
        return TaggedStream(self._core.stream(int(handle)))

    def read_class(self, name, start=0, stop=None):
        """The rows of a class's table, as Table.read gives them, each reference member as one column of
        (class name, object id) pairs, None for a null reference. A class the file's catalogue does not
        list is named by its id ("0x01000006")."""
        entries = self.classes()
        found = [entry for entry in entries if entry.name == name]
        if not found:
            raise KeyError("%s has no class %r" % (self.name, name))
        names = {entry.id: entry.name for entry in entries}
        columns = Table(self._core.table(found[0].table)).read(start=start, stop=stop)
        for member, oid_field, class_field in self._core.references(found[0].table):
            oids = columns.pop(oid_field)
            classes = columns.pop(class_field)
            absent = np.ma.getmaskarray(oids) | np.ma.getmaskarray(classes)
            pairs = np.empty(len(oids), dtype=object)
            for row, (oid, class_id, missing) in enumerate(zip(oids.data, classes.data.astype(np.uint32), absent)):
                if missing or oid < 0 or class_id == _core.NULL_CLASS:
                    continue
                pairs[row] = (names.get(int(class_id), "0x%08X" % class_id), int(oid))
            columns[member] = pairs
        return columns

    def create_table(self, name, columns, types=None, version=1):
        """A new table named name, holding the rows of columns ({field: values}; see Table.append).
        A field's type is types[field] when given ("int", "float", "double", "handle" or "string"),
        else the values' own: integers int, float32 float, other floats double, text string."""
        types = dict(types or {})
        fields = [(field, types.get(field) or _type_of(field, values)) for field, values in columns.items()]
        stored = [(_stored(field), kind) for field, kind in fields]
        table = Table(self._core.create_table(_stored(name), stored, version))
        table.append(columns)
        return table

    def create_array(self, values, type=None):
        """A new array holding values: a rows x fields array (one dimension: one field per row). Its
        element type is type when given, else the values' own as for create_table."""
        values = _two_dimensional(values)
        array = Array(self._core.create_array(type or _type_of("array", values), values.shape[1]))
        array.append(values)
        return array

    def create_stream(self, items=()):
        """A new tagged stream holding items ((tag, value) pairs; see TaggedStream.append)."""
        stream = TaggedStream(self._core.create_stream())
        stream.append(items)
        return stream


class Table:
    """A table of an open file, read and appended to in columns."""

    def __init__(self, core):
        self._core = core

    name = property(lambda self: self._core.name)
    handle = property(lambda self: Handle(self._core.handle))

    @property
    def fields(self):
        """{field name: type name} in the order rows hold them."""
        return dict(self._core.fields())

    def __len__(self):
        return self._core.length()

    def __repr__(self):
        return "<zqaromcore.Table %r (handle %d, %d rows)>" % (self.name, self.handle, len(self))

    def read(self, fields=None, start=0, stop=None):
        """Rows start to stop - 1 (all rows by default) of the fields named (all by default) as
        {field: numpy.ma.MaskedArray}, masked where a row's field holds no data."""
        names = list(self.fields) if fields is None else list(fields)
        start, stop = _bounds(start, stop, len(self))
        values, masks = self._core.read([_stored(name) for name in names], start, stop, True, 0.0)
        return {name: np.ma.MaskedArray(values[name], mask=masks[name]) for name in names}

    def column(self, field, start=0, stop=None, fill=0):
        """One field of rows start to stop - 1 as a plain array; a row whose field holds no data gives
        fill ("" for strings). The quickest way to a column."""
        start, stop = _bounds(start, stop, len(self))
        values, _ = self._core.read([_stored(field)], start, stop, False, float(fill))
        return values[field]

    def append(self, columns):
        """Appends rows from {field: values}, every field the same number of values: NumPy arrays,
        masked arrays (a masked value is stored as no data) or sequences, where None is no data too.
        Fields not named hold no data."""
        types = self.fields
        prepared = []
        for field, values in columns.items():
            if field not in types:
                raise KeyError("table %r has no field %r" % (self.name, field))
            prepared.append((_stored(field),) + _column(field, types[field], values))
        self._core.append(prepared)


class Array:
    """An array of an open file: rows of `fields` elements of one type."""

    def __init__(self, core):
        self._core = core

    handle = property(lambda self: Handle(self._core.handle))
    type = property(lambda self: self._core.type, doc="'int', 'float', 'double' or 'string'.")
    fields = property(lambda self: self._core.fields, doc="Elements per row.")
    shape = property(lambda self: (len(self), self.fields))

    def __len__(self):
        return self._core.length()

    def __repr__(self):
        return "<zqaromcore.Array handle %d: %d x %d %s>" % (self.handle, len(self), self.fields, self.type)

    def __array__(self, dtype=None, copy=None):
        values = self.read()
        return values if dtype is None else values.astype(dtype)

    def read(self, start=0, stop=None):
        """Rows start to stop - 1 (all by default) as a rows x fields array."""
        start, stop = _bounds(start, stop, len(self))
        return self._core.read(start, stop)

    def append(self, values):
        """Appends the rows of values, a rows x fields array (one dimension for one field per row)."""
        values = _two_dimensional(values)
        if values.shape[1] != self.fields:
            raise ValueError("array %d has %d fields per row, not %d" % (self.handle, self.fields, values.shape[1]))
        if self.type == "string":
            self._core.append([_text("array", value) for value in values.ravel()])
        else:
            self._core.append(np.ascontiguousarray(_numbers("array", self.type, values)))


class TaggedStream:
    """A tagged stream of an open file: items of a tag and a value."""

    def __init__(self, core):
        self._core = core

    handle = property(lambda self: Handle(self._core.handle))

    def __repr__(self):
        return "<zqaromcore.TaggedStream handle %d>" % self.handle

    def items(self):
        """Every item from the start as (tag, value): an int, numpy.float32 (float), float (double),
        Handle or str."""
        convert = {"int": int, "float": np.float32, "double": float, "handle": Handle, "string": str}
        return [(tag, convert[kind](value)) for tag, kind, value in self._core.items()]

    def append(self, items):
        """Writes (tag, value) items after the last: a Handle is stored as a handle, numpy.float32 as a
        float, any other float as a double, an integer as an int and a str as a string."""
        self._core.append([(tag,) + _item(tag, value) for tag, value in items])


def _stored(text):
    """A name or description as the file stores it: UTF-8, where the escaped bytes of a name read
    from a file (see the module's docstring) go back as those bytes."""
    return text.encode("utf-8", "surrogateescape")


def _bounds(start, stop, length):
    """Python's slice rules for start and stop: negative counts from the end."""
    start, stop, _ = slice(start, stop).indices(length)
    return start, max(start, stop)


def _type_of(field, values):
    values = values if isinstance(values, np.ndarray) else np.asarray(values)
    kind = values.dtype.kind
    if kind in "biu":
        return "int"
    if kind == "f":
        return "float" if values.dtype.itemsize == 4 else "double"
    if kind in "UO":
        return "string"
    raise TypeError("field %r: no field type holds %s values" % (field, values.dtype))


def _two_dimensional(values):
    values = values if isinstance(values, np.ndarray) else np.asarray(values)
    if values.ndim == 1:
        return values.reshape(-1, 1)
    if values.ndim != 2:
        raise ValueError("an array is written from rows x fields values, not %d dimensions" % values.ndim)
    return values


def _numbers(field, kind, values):
    """values as the dtype of a number field, refusing what would not survive the conversion."""
    if kind == "double":
        return np.asarray(values, dtype=np.float64)
    if kind == "float":
        return np.asarray(values, dtype=np.float32)
    values = np.asarray(values)
    if values.dtype.kind not in "biu":
        raise TypeError("field %r holds %ss, not %s values" % (field, kind, values.dtype))
    if values.size and (values.min() < _INT32.min or values.max() > _INT32.max):
        raise OverflowError("field %r: %ss are 32 bits, and %d..%d is beyond them"
                            % (field, kind, values.min(), values.max()))
    return values.astype(np.int32)


def _text(field, value):
    if not isinstance(value, str):
        raise TypeError("field %r holds strings, not %s" % (field, type(value).__name__))
    return value


def _column(field, kind, values):
    """(values, presence or None) as the compiled module takes them for a field of type kind."""
    if kind != "string" and not isinstance(values, np.ndarray) and any(value is None for value in values):
        # None is no data in every field, not a NaN a conversion would make of it.
        values = np.ma.MaskedArray([0 if value is None else value for value in values],
                                   mask=[value is None for value in values])
    mask = np.ma.getmask(values)
    data = np.ma.getdata(values) if mask is not np.ma.nomask else values
    if kind == "string":
        texts = [None if value is None else _text(field, value) for value in np.asarray(data, dtype=object).ravel()]
        absent = np.array([value is None for value in texts], dtype=bool)
        if mask is not np.ma.nomask:
            absent |= np.asarray(mask, dtype=bool).ravel()
        presence = None if not absent.any() else (~absent).astype(np.uint8)
        return texts, presence
    numbers = np.ascontiguousarray(_numbers(field, kind, data)).ravel()
    presence = None if mask is np.ma.nomask else np.ascontiguousarray(~np.asarray(mask, dtype=bool)).astype(np.uint8)
    return numbers, presence


def _item(tag, value):
    if isinstance(value, Handle):
        return ("handle", int(value))
    if isinstance(value, np.float32):
        return ("float", float(value))
    if isinstance(value, (bool, np.bool_)):
        raise TypeError("item %d: a stream holds no booleans" % tag)
    if isinstance(value, (int, np.integer)):
        if not _INT32.min <= value <= _INT32.max:
            raise OverflowError("item %d: ints are 32 bits, and %d is beyond them" % (tag, value))
        return ("int", int(value))
    if isinstance(value, (float, np.floating)):
        return ("double", float(value))
    if isinstance(value, str):
        return ("string", value)
    raise TypeError("item %d: a stream holds int, float, Handle or str, not %s" % (tag, type(value).__name__))
