# SPDX-License-Identifier: Apache-2.0
"""The steps inside a codec, as functions over arrays. Each returns a new array; the interpreter's lock is released while
the library works. What a function computes is told in the library's reference."""
from . import _qeljx

globals().update({name: value for name, value in vars(_qeljx.primitives).items() if not name.startswith("_")})
