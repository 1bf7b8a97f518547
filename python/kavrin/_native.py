"""The C interface (kavrin/kavrin.h) as ctypes sees it, and where the shared
library is found: $KAVRIN_LIBRARY when set, else the path recorded next to
this package when it was built or installed, else the system's loader."""

import ctypes
import os

EMPTY, NULL, INTEGER, LONG, BYTE, DOUBLE, BOOLEAN, DATE, STRING, OBJECT, ARRAY, MISSING, \
    VARIANT, STRING16 = range(14)
METHOD, PROPERTY_GET, PROPERTY_PUT, PROPERTY_PUT_REF = range(4)
ANSWER_UTF16 = 1


class _Text(ctypes.Structure):
    _fields_ = [("data", ctypes.c_void_p), ("length", ctypes.c_size_t)]


class _TextIn(ctypes.Structure):
    # The same layout as _Text; assigning a bytes object keeps it alive in the value.
    _fields_ = [("data", ctypes.c_char_p), ("length", ctypes.c_size_t)]


class _Array(ctypes.Structure):
    _fields_ = [("items", ctypes.c_void_p), ("count", ctypes.c_size_t), ("lbound", ctypes.c_int32)]


class _Payload(ctypes.Union):
    _fields_ = [("i", ctypes.c_int32), ("d", ctypes.c_double), ("text", _Text),
                ("text_in", _TextIn), ("object", ctypes.c_void_p), ("array", _Array)]


class Value(ctypes.Structure):
    _anonymous_ = ("u",)
    _fields_ = [("kind", ctypes.c_int32), ("element_kind", ctypes.c_int32), ("u", _Payload),
                ("owned", ctypes.c_void_p)]


class Member(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("invoke_kind", ctypes.c_int32),
                ("result_kind", ctypes.c_int32), ("parameter_count", ctypes.c_size_t)]


class Parameter(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("kind", ctypes.c_int32), ("optional", ctypes.c_int32),
                ("written", ctypes.c_int32)]


INVOKE_FN = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int32,
                             ctypes.POINTER(Value), ctypes.c_size_t, ctypes.POINTER(Value),
                             ctypes.POINTER(ctypes.c_void_p))
RELEASE_FN = ctypes.CFUNCTYPE(None, ctypes.c_void_p)
MESSAGE_BOX_FN = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int32,
                                  ctypes.c_char_p)
ACTIVE_CONTROL_FN = ctypes.CFUNCTYPE(ctypes.c_void_p, ctypes.c_void_p)


class Host(ctypes.Structure):
    _fields_ = [("context", ctypes.c_void_p), ("message_box", MESSAGE_BOX_FN),
                ("active_control", ACTIVE_CONTROL_FN), ("release", RELEASE_FN)]


def _library_path():
    path = os.environ.get("KAVRIN_LIBRARY")
    if path:
        return path
    try:
        from . import _library
    except ImportError:
        return "libkavrin.so.1"
    return os.path.join(os.path.dirname(os.path.abspath(__file__)), _library.PATH)


def _load():
    lib = ctypes.CDLL(_library_path())
    handle, error, status = ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int
    perror = ctypes.POINTER(ctypes.c_void_p)
    signatures = {
        "kavrin_version": (ctypes.c_char_p, []),
        "kavrin_open": (status, [ctypes.c_char_p, ctypes.POINTER(handle), perror]),
        "kavrin_create_object": (status, [ctypes.c_char_p, ctypes.POINTER(handle), perror]),
        "kavrin_open_database": (status, [ctypes.c_char_p, ctypes.POINTER(handle), perror]),
        "kavrin_open_dao": (status, [ctypes.c_char_p, ctypes.POINTER(handle), perror]),
        "kavrin_object_retain": (handle, [handle]),
        "kavrin_object_release": (None, [handle]),
        "kavrin_object_type_name": (status, [handle, ctypes.POINTER(Value), perror]),
        "kavrin_invoke": (status, [handle, ctypes.c_char_p, ctypes.c_int32, ctypes.POINTER(Value),
                                   ctypes.c_size_t, ctypes.POINTER(Value), ctypes.c_int32, perror]),
        "kavrin_value_clear": (None, [ctypes.POINTER(Value)]),
        "kavrin_error_number": (ctypes.c_int32, [error]),
        "kavrin_error_source": (ctypes.c_char_p, [error]),
        "kavrin_error_description": (ctypes.c_char_p, [error]),
        "kavrin_error_new": (error, [ctypes.c_int32, ctypes.c_char_p, ctypes.c_char_p]),
        "kavrin_error_free": (None, [error]),
        "kavrin_member_count": (ctypes.c_size_t, []),
        "kavrin_member_info": (status, [ctypes.c_size_t, ctypes.POINTER(Member)]),
        "kavrin_parameter_info": (status, [ctypes.c_size_t, ctypes.c_size_t,
                                           ctypes.POINTER(Parameter)]),
        "kavrin_object_new": (handle, [ctypes.c_char_p, INVOKE_FN, RELEASE_FN, ctypes.c_void_p]),
        "kavrin_object_context": (ctypes.c_void_p, [handle]),
        "kavrin_set_host": (status, [ctypes.POINTER(Host), perror]),
    }
    for name, (restype, argtypes) in signatures.items():
        function = getattr(lib, name)
        function.restype = restype
        function.argtypes = argtypes
    return lib


lib = _load()
