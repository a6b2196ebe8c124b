"""What the module raises."""

from __future__ import annotations

import enum
from typing import NamedTuple, Optional

from . import _native


class StatusCode(enum.IntEnum):
    """The codes of the library itself. A plug-in may report negative codes of its own."""

    Success = 0
    ConfigurationFault = -50209
    MemoryFull = -52000
    GeneralFault = -52003
    BadCast = -52004
    InvalidParameter = -52005
    ResourceNotFound = -52006
    OsFault = -52008
    PluginNotInitialized = -52010
    VersionMismatch = -63193


class Site(NamedTuple):
    """Where the library or a plug-in raised an error."""

    component: str  #: its last nine characters
    file: str
    line: int


class Error(Exception):
    """The base of this module's own exceptions."""


class LoadError(Error):
    """The library cannot be loaded."""


class ClosedError(Error):
    """An object was used after its end: what was closed, or a device of a list that was refreshed."""


class PluginError(Error):
    """A plug-in broke the contract. ``vykeldev check`` reports what is wrong with it."""


class StatusError(Error):
    """A call of the library failed."""

    def __init__(self, action: str, code: int, site: Optional[Site] = None) -> None:
        self.action = action  #: what failed, for example "refreshing the list"
        self.code = code  #: the code, negative
        self.name = _name_of(code)  #: the code's name, None for a plug-in's own code
        self.site = site  #: where it was raised, None when that is unknown
        text = f"{action} failed with code {code}"
        if self.name is not None:
            text += f" ({self.name})"
        if site is not None:
            text += f", raised in {site.file}, line {site.line}"
        super().__init__(text + "; 'vykeldev doctor' looks for the cause")


def _name_of(code: int) -> Optional[str]:
    try:
        return StatusCode(code).name
    except ValueError:
        return None


def check(action: str, code: int) -> None:
    """Raises StatusError when a code is an error."""
    if code < 0:
        raise StatusError(action, code)


def check_block(action: str, block: _native.StatusBlock) -> None:
    """Raises StatusError when a status block holds an error."""
    if block.code < 0:
        component, file = (text.decode("utf-8", "replace") for text in (block.component, block.file))
        raise StatusError(action, block.code, Site(component, file, block.line) if file else None)
