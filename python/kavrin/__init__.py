"""Kavrin's clsPub from Python, in process, through the C interface.

    import kavrin
    pub = kavrin.ClsPub("demo.db")
    pub.CheckDirNoGrade("010101", 0)             # '010101'
    pub.SepCode("01             main store")     # ('01', ' 01             main store')

Values: str is a String, bool a Boolean, int a Long (a Double beyond 32 bits),
float a Double, datetime.datetime or datetime.date a Date, None is Null,
kavrin.Empty and kavrin.Missing are Empty and an omitted argument, a list or
tuple is an array of Variants from 0 (kavrin.Array for another lower bound or
element type), kavrin.Integer and kavrin.Byte give the narrower numbers, an
object handed out by the component (kavrin.Object) is passed back as itself,
and any other Python object is an object whose members the component calls
by name (a list control with Clear and AddItem). Results come back the same
way; an Integer or Byte result is a kavrin.Integer or kavrin.Byte (an int).

Arguments written by reference: a member that writes into its arguments
(SepCode, StartAccMonth, GetInvUseFree, GetInvUseFreeNew, GetInvDifHead)
answers a tuple: its result (None for a member without one) followed by the
value of each parameter it writes, in order, after the call (kavrin.Missing
for one left out). A kavrin.Ref passed as an argument also receives what is
written into it; that works for the members of any object, not only clsPub's.

A failing call raises kavrin.Error with .number, .source and .description,
the platform's error. Objects are not thread-safe: use each from one thread
at a time.
"""

import atexit
import ctypes
import datetime
import itertools
import threading

from . import _native as _n
from ._native import lib as _lib

__all__ = ["ClsPub", "Object", "Error", "Ref", "Array", "Integer", "Byte", "Empty", "Missing",
           "ListControl", "open_database", "open_dao", "create_object", "members", "set_host",
           "version"]


class Error(Exception):
    """A failed call: the platform's error number, its source and description."""

    def __init__(self, number, source="", description=""):
        super().__init__(f"{description} ({number})")
        self.number = number
        self.source = source
        self.description = description


class _Marker:
    __slots__ = ("_name",)

    def __init__(self, name):
        self._name = name

    def __repr__(self):
        return f"kavrin.{self._name}"

    def __bool__(self):
        return False


Empty = _Marker("Empty")
Missing = _Marker("Missing")


class Integer(int):
    """A 16-bit Integer value."""

    def __repr__(self):
        return f"kavrin.Integer({int(self)})"


class Byte(int):
    """A Byte value (0 to 255)."""

    def __repr__(self):
        return f"kavrin.Byte({int(self)})"


_KIND_NAMES = ["Empty", "Null", "Integer", "Long", "Byte", "Double", "Boolean", "Date", "String",
               "Object", "Array", "Missing", "Variant"]


class Array(list):
    """A one-dimensional array: its items, its lower bound and the type of its
    elements ("Variant" for any, "Boolean", "String", "Long", ...)."""

    def __init__(self, items=(), lbound=0, element_type="Variant"):
        super().__init__(items)
        if element_type not in _KIND_NAMES[2:11] + ["Variant"]:
            raise ValueError(f"no array of {element_type}")
        self.lbound = lbound
        self.element_type = element_type

    def __repr__(self):
        return f"kavrin.Array({list(self)!r}, lbound={self.lbound}, " \
               f"element_type={self.element_type!r})"


class Ref:
    """An argument the member may write into: read .value after the call."""

    __slots__ = ("value",)

    def __init__(self, value=Empty):
        self.value = value

    def __repr__(self):
        return f"kavrin.Ref({self.value!r})"


class ListControl:
    """A list control for FillCboCK: what it was filled with is in .items."""

    TypeName = "ComboBox"

    def __init__(self, items=()):
        self.items = list(items)

    def Clear(self):
        self.items.clear()

    def AddItem(self, item, index=None):
        if index is None:
            self.items.append(item)
        else:
            self.items.insert(index, item)


# ---- Values ----

_OLE_ZERO = datetime.datetime(1899, 12, 30)
_DAY = 86400.0


def _to_ole(when):
    if not isinstance(when, datetime.datetime):
        when = datetime.datetime(when.year, when.month, when.day)
    delta = when.replace(tzinfo=None) - _OLE_ZERO
    days = delta.days
    fraction = (delta.seconds + delta.microseconds / 1e6) / _DAY
    # Before the zero date the time of day still counts forward from midnight.
    return days + fraction if days >= 0 or fraction == 0 else days + 1 - fraction


def _from_ole(value):
    days = int(value)  # towards zero, as the platform reads the day
    fraction = abs(value - days)
    seconds = round(fraction * _DAY)
    return _OLE_ZERO + datetime.timedelta(days=days, seconds=seconds)


_INT32 = range(-2**31, 2**31)


def _put(slot, value, keep):
    """Fills a caller's value; `keep` holds what must live until the call ends."""
    kind = type(value)
    if kind is str:
        data = value.encode("utf-16-le", "surrogatepass")
        keep.append(data)
        slot.kind = _n.STRING16
        slot.text_in.data = data
        slot.text_in.length = len(data) >> 1
    elif kind is bool:
        slot.kind = _n.BOOLEAN
        slot.i = -1 if value else 0
    elif kind is int:
        if value in _INT32:
            slot.kind = _n.LONG
            slot.i = value
        else:
            slot.kind = _n.DOUBLE
            slot.d = float(value)
    elif kind is float:
        slot.kind = _n.DOUBLE
        slot.d = value
    elif value is None:
        slot.kind = _n.NULL
    elif value is Empty:
        slot.kind = _n.EMPTY
    elif value is Missing:
        slot.kind = _n.MISSING
    elif kind is Integer or kind is Byte:
        slot.kind = _n.INTEGER if kind is Integer else _n.BYTE
        slot.i = value
    elif isinstance(value, Ref):
        _put(slot, value.value, keep)
    elif isinstance(value, Object):
        slot.kind = _n.OBJECT
        slot.object = value._handle
        keep.append(value)
    elif isinstance(value, (list, tuple)):
        items = (_n.Value * len(value))()
        for item, element in zip(items, value):
            _put(item, element, keep)
        keep.append(items)
        slot.kind = _n.ARRAY
        slot.element_kind = _KIND_NAMES.index(getattr(value, "element_type", "Variant"))
        slot.array.items = ctypes.addressof(items) if len(value) else None
        slot.array.count = len(value)
        slot.array.lbound = getattr(value, "lbound", 0)
    elif isinstance(value, (datetime.datetime, datetime.date)):
        slot.kind = _n.DATE
        slot.d = _to_ole(value)
    elif isinstance(value, int):
        _put(slot, int(value), keep)
    elif isinstance(value, float):
        _put(slot, float(value), keep)
    elif isinstance(value, str):
        _put(slot, str(value), keep)
    else:
        handle = _wrap_python_object(value)
        keep.append(_Handle(handle))
        slot.kind = _n.OBJECT
        slot.object = handle


def _get(slot):
    """The Python value of a value the library filled (or a callback's argument)."""
    kind = slot.kind
    if kind == _n.STRING16:
        return ctypes.string_at(slot.text.data, slot.text.length * 2).decode(
            "utf-16-le", "surrogatepass")
    if kind == _n.STRING:
        return ctypes.string_at(slot.text.data, slot.text.length).decode("utf-8", "replace")
    if kind == _n.LONG:
        return slot.i
    if kind == _n.BOOLEAN:
        return slot.i != 0
    if kind == _n.DOUBLE:
        return slot.d
    if kind == _n.NULL:
        return None
    if kind == _n.EMPTY:
        return Empty
    if kind == _n.INTEGER:
        return Integer(slot.i)
    if kind == _n.BYTE:
        return Byte(slot.i)
    if kind == _n.DATE:
        return _from_ole(slot.d)
    if kind == _n.MISSING:
        return Missing
    if kind == _n.OBJECT:
        if not slot.object:
            return Object(None)
        context = _lib.kavrin_object_context(slot.object)
        if context and context in _python_objects:
            return _python_objects[context]
        return Object(_lib.kavrin_object_retain(slot.object))
    if kind == _n.ARRAY:
        count = slot.array.count
        items = (_n.Value * count).from_address(slot.array.items) if count else ()
        return Array([_get(item) for item in items], slot.array.lbound,
                     _KIND_NAMES[slot.element_kind])
    raise Error(13, "Kavrin", "Type mismatch")


def _raise(error):
    number = _lib.kavrin_error_number(error)
    source = (_lib.kavrin_error_source(error) or b"").decode("utf-8", "replace")
    description = (_lib.kavrin_error_description(error) or b"").decode("utf-8", "replace")
    _lib.kavrin_error_free(error)
    raise Error(number, source, description)


_HOLDS_STORAGE = frozenset((_n.STRING, _n.STRING16, _n.OBJECT, _n.ARRAY))


def _invoke(handle, name, kind, args):
    """Calls member `name` (bytes) with `args`; answers (result, written) where
    written maps the index of each argument the member wrote to its value."""
    count = len(args)
    values = (_n.Value * count)() if count else None
    keep = []
    for slot, arg in zip(values or (), args):
        _put(slot, arg, keep)
    result = _n.Value()
    error = ctypes.c_void_p()
    status = _lib.kavrin_invoke(handle, name, kind, values, count, result, _n.ANSWER_UTF16, error)
    written = {}
    if values is not None:
        for index, slot in enumerate(values):
            if slot.owned:
                written[index] = _get(slot)
                if slot.kind in _HOLDS_STORAGE:
                    _lib.kavrin_value_clear(slot)
                if isinstance(args[index], Ref):
                    args[index].value = written[index]
    if status:
        _raise(error)
    answer = _get(result)
    if result.kind in _HOLDS_STORAGE:
        _lib.kavrin_value_clear(result)
    return answer, written


# ---- Objects ----

class _Handle:
    """Owns one kavrin_object handle."""

    __slots__ = ("handle",)

    def __init__(self, handle):
        self.handle = handle

    def __del__(self):
        if self.handle and _lib is not None:
            _lib.kavrin_object_release(self.handle)


class Object:
    """An object of the component (a KitDatabase, a record set, a desktop
    database, clsPub itself), its members called by name: obj.Member(args)
    calls a method; get, put and put_ref read and assign properties.
    Object(None) is Nothing."""

    def __init__(self, handle):
        self._owner = _Handle(handle)
        self._handle = handle

    def __bool__(self):
        return bool(self._handle)

    @property
    def type_name(self):
        if not self._handle:
            return "Nothing"
        value = _n.Value()
        error = ctypes.c_void_p()
        if _lib.kavrin_object_type_name(self._handle, value, error):
            _raise(error)
        text = _get(value)
        _lib.kavrin_value_clear(value)
        return text

    def invoke(self, name, *args, kind=_n.METHOD):
        return _invoke(self._handle, name.encode(), kind, args)[0]

    def get(self, name, *args):
        return self.invoke(name, *args, kind=_n.PROPERTY_GET)

    def put(self, name, *args):
        self.invoke(name, *args, kind=_n.PROPERTY_PUT)

    def put_ref(self, name, *args):
        self.invoke(name, *args, kind=_n.PROPERTY_PUT_REF)

    def __getattr__(self, name):
        if name.startswith("_"):
            raise AttributeError(name)
        encoded = name.encode()
        return lambda *args: _invoke(self._handle, encoded, _n.METHOD, args)[0]

    def __repr__(self):
        return f"<kavrin.Object {self.type_name}>"


def _opened(function, text):
    handle = ctypes.c_void_p()
    error = ctypes.c_void_p()
    if function(text.encode() if text is not None else None, handle, error):
        _raise(error)
    return handle.value


def open_database(connection):
    """A KitDatabase opened from a connection string, to assign to DBIA."""
    return Object(_opened(_lib.kavrin_open_database, connection))


def open_dao(path):
    """A desktop database opened read-only from a SQLite file, for ExistTableQueryDAO."""
    return Object(_opened(_lib.kavrin_open_dao, path))


def create_object(prog_id):
    """An object by its programmatic identifier ("Kavrin.clsPub")."""
    return Object(_opened(_lib.kavrin_create_object, prog_id))


def version():
    return _lib.kavrin_version().decode()


# ---- clsPub ----

class _MemberSpec:
    __slots__ = ("name", "encoded", "kind", "result", "parameters", "written")

    def __init__(self, index):
        info = _n.Member()
        _lib.kavrin_member_info(index, info)
        self.name = info.name.decode()
        self.encoded = info.name
        self.kind = info.invoke_kind
        self.result = _KIND_NAMES[info.result_kind]
        self.parameters = []
        for p in range(info.parameter_count):
            parameter = _n.Parameter()
            _lib.kavrin_parameter_info(index, p, parameter)
            self.parameters.append((parameter.name.decode(), _KIND_NAMES[parameter.kind],
                                    bool(parameter.optional), bool(parameter.written)))
        self.written = [i for i, p in enumerate(self.parameters) if p[3]]


def members():
    """clsPub's members in their fixed order: (name, kind, result type,
    [(parameter, type, optional, written), ...]); kind is "method",
    "get" or "put_ref"."""
    kinds = {_n.METHOD: "method", _n.PROPERTY_GET: "get", _n.PROPERTY_PUT_REF: "put_ref"}
    return [(m.name, kinds[m.kind], m.result, list(m.parameters)) for m in _MEMBERS]


_MEMBERS = [_MemberSpec(i) for i in range(_lib.kavrin_member_count())]


def _arguments(info, args, named):
    if not named:
        return args
    args = list(args)
    lowered = {p[0].lower(): i for i, p in enumerate(info.parameters)}
    for key, value in named.items():
        index = lowered.get(key.lower())
        if index is None:
            raise TypeError(f"{info.name}() has no parameter {key!r}")
        while len(args) <= index:
            args.append(Missing)
        args[index] = value
    return args


def _method(info):
    def call(self, *args, **named):
        args = _arguments(info, args, named)
        answer, written = _invoke(self._handle, info.encoded, _n.METHOD, args)
        if info.result == "Empty":
            answer = None
        if not info.written:
            return answer
        after = []
        for index in info.written:
            if index in written:
                after.append(written[index])
            elif index < len(args):
                given = args[index]
                after.append(given.value if isinstance(given, Ref) else given)
            else:
                after.append(Missing)
        return (answer, *after)

    call.__name__ = info.name
    call.__doc__ = f"{info.name}({', '.join(p[0] for p in info.parameters)})"
    return call


class ClsPub(Object):
    """clsPub on a database: ClsPub("demo.db"), ClsPub("sqlite:PATH"),
    ClsPub("odbc:..."), or ClsPub() with DBIA empty. Every member is a method
    of the same name (parameters also by name); DBIA is a property holding
    the KitDatabase (assign an object from kavrin.open_database, or None)."""

    def __init__(self, connection=None):
        super().__init__(_opened(_lib.kavrin_open, connection))

    @property
    def DBIA(self):
        return _invoke(self._handle, b"DBIA", _n.PROPERTY_GET, ())[0]

    @DBIA.setter
    def DBIA(self, database):
        _invoke(self._handle, b"DBIA", _n.PROPERTY_PUT_REF,
                (Object(None) if database is None else database,))


for _spec in _MEMBERS:
    if _spec.kind == _n.METHOD:
        setattr(ClsPub, _spec.name, _method(_spec))
del _spec


# ---- Python objects the component calls ----

_python_objects = {}  # context key -> the Python object behind a handle
_next_key = itertools.count(1)
_callback_keep = threading.local()  # what a callback answered, alive until copied


def _member_of(target, name):
    if hasattr(target, name):
        return name
    lowered = name.lower()
    for attribute in dir(target):
        if attribute.lower() == lowered and not attribute.startswith("_"):
            return attribute
    return None


def _type_name(target):
    name = getattr(target, "TypeName", None)
    return name if isinstance(name, str) else type(target).__name__


def _report(error_out, number, source, description):
    error_out[0] = _lib.kavrin_error_new(number, source.encode(), description.encode())
    return 1


@_n.INVOKE_FN
def _invoke_python(context, name, kind, args, count, result, error_out):
    target = _python_objects.get(context)
    try:
        name = name.decode()
        attribute = _member_of(target, name)
        if attribute is None:
            return _report(error_out, 438, _type_name(target),
                           "Object doesn't support this property or method")
        values = [_get(args[i]) for i in range(count)]
        if kind in (_n.PROPERTY_PUT, _n.PROPERTY_PUT_REF):
            setattr(target, attribute, values[-1])
            return 0
        member = getattr(target, attribute)
        answer = member(*values) if callable(member) else member
        keep = []
        if answer is not None:
            _put(result[0], answer, keep)
        _callback_keep.values = keep
        return 0
    except Error as e:
        return _report(error_out, e.number, e.source, e.description)
    except Exception as e:  # the component sees an automation error
        return _report(error_out, 440, _type_name(target), f"{type(e).__name__}: {e}")


@_n.RELEASE_FN
def _release_python(context):
    _python_objects.pop(context, None)


def _wrap_python_object(target):
    key = next(_next_key)
    _python_objects[key] = target
    handle = _lib.kavrin_object_new(_type_name(target).encode(), _invoke_python, _release_python,
                                    key)
    if not handle:
        del _python_objects[key]
        raise MemoryError("cannot make an object handle")
    return handle


# ---- The host's user interface ----

_host = None  # the callbacks installed, kept alive while installed


def set_host(message_box=None, active_control=None):
    """Installs the UI the component reaches: message_box(prompt, buttons,
    title) answers the button pressed (None is OK), active_control() answers
    the focused control (any object, see the module's help) or None. With
    neither, restores the default host (message boxes to stderr)."""
    global _host
    if message_box is None and active_control is None:
        _lib.kavrin_set_host(None, None)
        _host = None
        return

    @_n.MESSAGE_BOX_FN
    def show(_context, prompt, buttons, title):
        try:
            answer = message_box(prompt.decode(), buttons, title.decode()) if message_box else 1
            return 1 if answer is None else int(answer)
        except Exception:  # a failing dialog answers OK
            return 1

    @_n.ACTIVE_CONTROL_FN
    def focused(_context):
        try:
            control = active_control() if active_control else None
            if control is None:
                return None
            if isinstance(control, Object):
                return _lib.kavrin_object_retain(control._handle)
            return _wrap_python_object(control)
        except Exception:
            return None

    host = _n.Host(None, show, focused, _n.RELEASE_FN())
    error = ctypes.c_void_p()
    if _lib.kavrin_set_host(host, error):
        _raise(error)
    _host = (show, focused)


@atexit.register
def _restore_host():
    # The installed host must not call into an interpreter that is going away.
    if _host is not None:
        _lib.kavrin_set_host(None, None)
