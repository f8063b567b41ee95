"""Records of the C interface as values of Python."""

from __future__ import annotations

import typing
from typing import Any, Tuple, Type

from . import _arrays
from ._arrays import Record

_Value = typing.TypeVar("_Value", bound="RecordValue")


class RecordValue:
    """A record that never changes and is compared, hashed, copied and pickled by its fields."""

    __slots__ = ("_record",)
    _record: Record

    @classmethod
    def _of(cls: Type[_Value], record: Record) -> _Value:
        value = cls.__new__(cls)
        record.setflags(write=False)
        value._record = record
        return value

    def _content(self) -> Tuple[object, ...]:
        """Return what makes two values equal."""
        return (_arrays.content_of(self._record),)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, RecordValue) or type(other) is not type(self):
            return NotImplemented
        return self._content() == other._content()

    def __hash__(self) -> int:
        return hash(self._content())

    def __reduce__(self) -> Tuple[object, Tuple[object, ...]]:
        return _restored, (type(self), _arrays.cleared(self._record))


def _restored(kind: Any, *content: object) -> object:
    return kind._of(*content)
