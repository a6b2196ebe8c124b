"""The binary contract of the library for ctypes. Names, order and types are those of vykel/vykel_c.h."""

from __future__ import annotations

import ctypes
import sys
from ctypes import POINTER, c_bool, c_char, c_char_p, c_int32, c_uint32, c_uint64, c_ubyte, c_void_p
from typing import Any, Type, TypeVar

LIBRARY_FILE = "vykeldevenum.dll" if sys.platform == "win32" else "libvykeldevenum.so"
NO_DEVICE_NUMBER = 0xFFFFFFFF

Table = TypeVar("Table", bound=ctypes.Structure)


class StatusBlock(ctypes.Structure):
    """The record into which an operation reports its outcome."""

    _fields_ = [
        ("structSize", c_uint32),
        ("code", c_int32),
        ("component", c_char * 10),
        ("file", c_char * 101),
        ("padding1", c_ubyte * 1),
        ("line", c_uint32),
        ("padding2", c_ubyte * 4),
        ("reserved", c_uint64),
        ("unassigned", c_ubyte * 72),
    ]

    def __init__(self) -> None:
        super().__init__(structSize=ctypes.sizeof(StatusBlock))


def _operation(result: Any, *arguments: Any) -> Any:
    """The type of a slot: a function that takes its object first."""
    return ctypes.CFUNCTYPE(result, c_void_p, *arguments)


_Status = POINTER(StatusBlock)


class DeviceOperations(ctypes.Structure):
    """The nine slots of a device."""

    _fields_ = [
        ("getVersion", _operation(c_int32)),
        ("getPersistentToken", _operation(c_char_p, c_uint32)),
        ("getSortKey", _operation(c_uint32)),
        ("setNumber", _operation(None, c_uint32, _Status)),
        ("getNumber", _operation(c_uint32)),
        ("reserved1", _operation(None)),
        ("reserved2", _operation(None)),
        ("getAlias", _operation(c_char_p)),
        ("setAlias", _operation(None, c_char_p, c_int32, c_int32, _Status)),
    ]


class DeviceListOperations(ctypes.Structure):
    """The slots of a list that may be called."""

    _fields_ = [
        ("getVersion", _operation(c_int32)),
        ("isStale", _operation(c_bool)),
        ("refresh", _operation(None, _Status)),
        ("getCount", _operation(c_uint32)),
        ("getDevice", _operation(c_void_p, c_uint32, c_int32, _Status)),
        ("release", _operation(None)),
        ("attach", _operation(None, c_uint64, _Status)),
        ("detach", _operation(None, c_uint64)),
    ]


def operations(table: Type[Table], address: int) -> Table:
    """The table of the object at this address."""
    return table.from_address(c_void_p.from_address(address).value or 0)


class Exports:
    """The exports of a loaded library. Raises OSError or AttributeError when it is not the library."""

    def __init__(self, path: str) -> None:
        library = ctypes.CDLL(path)
        self.initialize: Any = library.vykeldevenum_initialize
        self.getAllKelDevices: Any = library.vykeldevenum_getAllKelDevices
        self.finalize: Any = library.vykeldevenum_finalize
        self.initialize.argtypes = self.finalize.argtypes = []
        self.getAllKelDevices.argtypes = [c_int32, POINTER(c_void_p)]
        for export in (self.initialize, self.getAllKelDevices, self.finalize):
            export.restype = c_int32
