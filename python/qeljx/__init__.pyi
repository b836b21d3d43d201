# SPDX-License-Identifier: Apache-2.0
import os
from typing import Any, Literal, NamedTuple, Optional, Union, overload

import numpy as np

__version__: str

class Error(ValueError):
    position: Optional[int]

class Density(NamedTuple):
    x: float
    y: float
    per_metre: bool = False
    @classmethod
    def of_dpi(cls, x: float, y: Optional[float] = None) -> "Density": ...
    @property
    def dpi(self) -> Optional[tuple[float, float]]: ...

class Metadata(NamedTuple):
    icc: bytes = b""
    exif: bytes = b""
    xmp: bytes = b""
    density: Optional[Density] = None
    comments: tuple[str, ...] = ()
    others: tuple[str, ...] = ()

class Decoded(NamedTuple):
    array: np.ndarray
    colour: str
    precision: int
    warnings: list[str]
    is_damaged: bool
    metadata: Metadata

class _DecodedPlanes(NamedTuple):
    array: list[np.ndarray]
    colour: str
    precision: int
    warnings: list[str]
    is_damaged: bool
    metadata: Metadata

class Difference(NamedTuple):
    psnr: float
    mean_squared_error: float
    largest_error: int

class Comparison(NamedTuple):
    psnr: float
    mean_squared_error: float
    largest_error: int
    channels: list[Difference]

_Source = Union[bytes, bytearray, memoryview, str, os.PathLike]
_Region = Optional[tuple[int, int, int, int]]

@overload
def decode(
    source: _Source, *, reduce: int = 0, layers: int = 0, smooth: bool = True, region: _Region = None,
    planes: Literal[False] = False
) -> Decoded: ...
@overload
def decode(
    source: _Source, *, reduce: int = 0, layers: int = 0, smooth: bool = True, region: _Region = None, planes: Literal[True]
) -> _DecodedPlanes: ...
def info(source: _Source) -> dict[str, Any]: ...
def encode(array: np.ndarray, format: str = "jpeg", *, metadata: Optional[Metadata] = None, **options: object) -> bytes: ...
def compare(a: np.ndarray, b: np.ndarray, precision: int = 0) -> Comparison: ...
def set_threads(threads: int) -> None: ...
