# SPDX-License-Identifier: Apache-2.0
import os
from typing import NamedTuple, Optional, Union

import numpy as np

__version__: str

class Error(ValueError):
    position: Optional[int]

class Decoded(NamedTuple):
    array: np.ndarray
    colour: str
    precision: int
    warnings: list[str]
    is_damaged: bool

class Comparison(NamedTuple):
    psnr: float
    mean_squared_error: float
    largest_error: int

def decode(
    source: Union[bytes, bytearray, memoryview, str, os.PathLike], *, reduce: int = 0, layers: int = 0, smooth: bool = True
) -> Decoded: ...
def encode(array: np.ndarray, format: str = "jpeg", **options: object) -> bytes: ...
def compare(a: np.ndarray, b: np.ndarray, precision: int = 0) -> Comparison: ...
def set_threads(threads: int) -> None: ...
