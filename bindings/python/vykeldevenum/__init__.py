"""Lists the devices of the VY-KEL driver family, whoever made them.

    import vykeldevenum

    with vykeldevenum.Library() as library, library.devices() as devices:
        devices.refresh()
        for device in devices:
            print(device.number, device.alias, device.token())

An object that is used after its end raises ClosedError: a device ends when its list is refreshed or closed, and
a list at the latest when its library is closed. Any thread may use any object; calls on one list and its devices
wait for each other, so a list serves one thread at a time.
"""

from __future__ import annotations

import ctypes
import os
import threading
from typing import Any, Iterator, NoReturn, Optional, Set, TypeVar, Union

from . import _native
from .errors import (
    ClosedError,
    Error,
    LoadError,
    PluginError,
    Site,
    StatusCode,
    StatusError,
    check,
    check_block,
)

__all__ = [
    "ClosedError",
    "Device",
    "DeviceList",
    "Error",
    "Library",
    "LoadError",
    "PluginError",
    "Site",
    "StatusCode",
    "StatusError",
]
__version__ = "1.0.0"

_Self = TypeVar("_Self", bound="_Closable")


class _Closable:
    """An object that ends with close() or at the end of a ``with`` block."""

    def __enter__(self: _Self) -> _Self:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __reduce__(self) -> NoReturn:
        raise TypeError(f"a {type(self).__name__} cannot be copied or pickled")

    def close(self) -> None:
        raise NotImplementedError


class Library(_Closable):
    """The library, initialised: it has loaded the registered plug-ins.

    ``path`` is the library's file. Without it, Library() takes the file beside this module, or else the one that
    the system's loader finds: on Windows beside the program, in the system's folder or in a folder given to
    os.add_dll_directory; on Linux where ld.so looks. Raises LoadError or StatusError.

    Several of these objects may be open. Closing the last one unloads the plug-ins; the next one loads those that
    are registered then. One that is never closed lives until the process ends.
    """

    def __init__(self, path: Optional[Union[str, "os.PathLike[str]"]] = None) -> None:
        self._lock = threading.RLock()
        self._lists: Set[DeviceList] = set()
        self._exports = _load(path)
        check("initialising the library", self._exports.initialize())
        self._closed = False

    @property
    def closed(self) -> bool:
        """Whether close() was called."""
        return self._closed

    def devices(self) -> DeviceList:
        """A new list over all plug-ins. It is empty until its first refresh. Raises StatusError."""
        with self._lock:
            if self._closed:
                raise ClosedError("the library was closed")
            address = ctypes.c_void_p()
            check("making a list", self._exports.getAllKelDevices(0, ctypes.byref(address)))
            made = DeviceList(self._lists, address.value or 0)
            self._lists.add(made)
            return made

    def close(self) -> None:
        """Closes the lists that are still open, then the library. May be called again."""
        with self._lock:
            if self._closed:
                return
            self._closed = True
            for each in list(self._lists):
                each.close()
            self._exports.finalize()


class DeviceList(_Closable):
    """The devices of a machine after the last refresh: len(), an index and ``for`` reach them.

    Made by Library.devices(). It is closed with its library at the latest.
    """

    def __init__(self, open_lists: Set[DeviceList], address: int) -> None:
        self._lock = threading.RLock()
        self._open_lists = open_lists
        self._address: Optional[int] = address
        self._refreshes = 0

    @property
    def closed(self) -> bool:
        """Whether the list or its library was closed."""
        return self._address is None

    def refresh(self) -> None:
        """Looks for devices, gives numbers to new ones, and ends the devices handed out before.

        Waits without limit while another process numbers devices. A refresh that raises StatusError may have
        found devices all the same, some without a number: look at the list. A plug-in that fails is left out
        without an error.
        """
        with self._lock:
            self._refreshes += 1  # first: the devices end even when the refresh fails
            self._report("refreshing the list", "refresh")

    @property
    def stale(self) -> bool:
        """Whether a refresh may show anything new. Cheap; ask as often as you like."""
        return bool(self._call("isStale"))

    def __len__(self) -> int:
        return int(self._call("getCount"))

    def __getitem__(self, index: int) -> Device:
        return self.get(index)

    def __iter__(self) -> Iterator[Device]:
        """The devices after the last refresh. The next refresh ends them, even in the middle of a loop."""
        with self._lock:
            return iter([self.get(index) for index in range(len(self))])

    def get(self, index: int, minimum_version: int = 0) -> Device:
        """The device at an index.

        Raises IndexError, or StatusError (VersionMismatch) when the device is older than ``minimum_version``.
        """
        _check_range("minimum_version", minimum_version, -(2**31), 2**31)
        with self._lock:
            count = len(self)
            if not -count <= index < count:
                raise IndexError(f"there is no device {index}: the list has {count}")
            address = self._report("getting a device", "getDevice", index % count, minimum_version)
            return Device(self, address, self._refreshes)

    def attach(self, token: int) -> None:
        """Passes a token of 64 bits, which only the plug-ins understand, on to every plug-in. Raises StatusError
        when one refuses; then none keeps it."""
        _check_range("token", token, 0, 2**64)
        self._report("attaching", "attach", token)

    def detach(self, token: int) -> None:
        """Withdraws a token from every plug-in."""
        _check_range("token", token, 0, 2**64)
        self._call("detach", token)

    def close(self) -> None:
        """Ends the list and its devices. May be called again."""
        with self._lock:
            if self._address is not None:
                self._call("release")
                self._address = None
                self._open_lists.discard(self)

    def _call(self, operation: str, *arguments: Any) -> Any:
        with self._lock:
            if self._address is None:
                raise ClosedError("the list was closed")
            table = _native.operations(_native.DeviceListOperations, self._address)
            return getattr(table, operation)(self._address, *arguments)

    def _report(self, action: str, operation: str, *arguments: Any) -> Any:
        """Calls an operation that reports into a status block."""
        block = _native.StatusBlock()
        result = self._call(operation, *arguments, ctypes.byref(block))
        check_block(action, block)
        return result


class Device:
    """One device, as a DeviceList hands it out. Its plug-in is asked for every property anew."""

    __slots__ = ("_list", "_address", "_refreshes")

    def __init__(self, owner: DeviceList, address: int, refreshes: int) -> None:
        self._list = owner
        self._address = address
        self._refreshes = refreshes  # how often the list was refreshed when it handed the device out

    @property
    def number(self) -> Optional[int]:
        """The machine-wide number n of KELn; None when the device has none."""
        number = int(self._call("getNumber"))
        return None if number == _native.NO_DEVICE_NUMBER else number

    @property
    def alias(self) -> Optional[str]:
        """The alias; None when the device takes none, an empty text when it has none yet."""
        return _text(self._call("getAlias"))

    def set_alias(self, alias: str) -> None:
        """Gives the device an alias, which its plug-in keeps for good. Raises StatusError when it refuses."""
        if "\0" in alias:
            raise ValueError("an alias cannot hold a NUL character")
        block = _native.StatusBlock()
        self._call("setAlias", alias.encode("utf-8"), 1, 0, ctypes.byref(block))
        check_block("setting the alias", block)

    @property
    def version(self) -> int:
        """The version of the device's interface."""
        return int(self._call("getVersion"))

    @property
    def sort_key(self) -> int:
        """Orders the devices that have no number yet: lower keys are numbered first."""
        return int(self._call("getSortKey"))

    def token(self, format: int = 1) -> str:
        """A text that names the device for good. ``format`` is 1 or 2: two forms of the token."""
        _check_range("format", format, 1, 3)
        token = _text(self._call("getPersistentToken", format))
        if token is None:
            raise PluginError(f"a device has no token of format {format}: 'vykeldev check' its plug-in")
        return token

    def __repr__(self) -> str:
        try:
            return f"<Device {self.token()!r} number={self.number}>"
        except Error as error:
            return f"<Device: {error}>"

    def _call(self, operation: str, *arguments: Any) -> Any:
        with self._list._lock:
            if self._list.closed or self._refreshes != self._list._refreshes:
                raise ClosedError("the device's list was refreshed or closed: ask the list for it anew")
            table = _native.operations(_native.DeviceOperations, self._address)
            return getattr(table, operation)(self._address, *arguments)


def _load(path: Optional[Union[str, "os.PathLike[str]"]]) -> _native.Exports:
    if path is not None:
        target = os.path.abspath(path)
    else:
        beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), _native.LIBRARY_FILE)
        target = beside if os.path.exists(beside) else _native.LIBRARY_FILE
    try:
        return _native.Exports(target)
    except OSError as error:
        raise LoadError(f"cannot load {target} ({error}): is it there, and for 64-bit Python?") from error
    except AttributeError as error:
        raise LoadError(f"{target} is not the library: {error}") from error


def _text(text: Optional[bytes]) -> Optional[str]:
    """A text of a device. What is not UTF-8 becomes U+FFFD, so that one bad text does not hide the others."""
    return None if text is None else text.decode("utf-8", "replace")


def _check_range(name: str, value: int, first: int, end: int) -> None:
    if not first <= value < end:  # ctypes would cut it to its last bits
        raise ValueError(f"{name} must be at least {first} and below {end}, not {value}")
