# SPDX-License-Identifier: Apache-2.0
"""JPEG and JPEG 2000 to numpy arrays and back.

    picture = qeljx.decode("photo.jp2")
    data = qeljx.encode(picture.array, "jpeg", quality=85)

qeljx.primitives has the steps inside: colours, DCT, Huffman coding, wavelets, code-blocks."""
import os
import warnings
from typing import NamedTuple, Optional

from . import _qeljx
from ._qeljx import Error, set_threads
from ._qeljx import version as __version__

__all__ = ["Comparison", "Decoded", "Density", "Difference", "Error", "Metadata", "compare", "decode", "encode", "info",
           "set_threads"]


class Density(NamedTuple):
    """Of pixels, across and down: in a metre, or only how their sides relate."""

    x: float
    y: float
    per_metre: bool = False

    @classmethod
    def of_dpi(cls, x, y=None):
        """Dots per inch; y is x where nothing is said."""
        return cls(x / 0.0254, (x if y is None else y) / 0.0254, True)

    @property
    def dpi(self):
        """Dots per inch, (x, y); None of an aspect ratio."""
        return (self.x * 0.0254, self.y * 0.0254) if self.per_metre else None


class Metadata(NamedTuple):
    """What a file says beside the picture."""

    icc: bytes = b""  # the colour profile
    exif: bytes = b""  # from the TIFF header on; it may say that the picture is to be turned
    xmp: bytes = b""  # the packet
    density: Optional[Density] = None
    comments: tuple = ()  # bytes that are no UTF-8 are surrogates, as in os.fsdecode
    others: tuple = ()  # names of what was found and is not kept


def _metadata(icc, exif, xmp, density, comments, others):
    return Metadata(icc, exif, xmp, density and Density(*density), tuple(comments), tuple(others))


class Decoded(NamedTuple):
    """A decoded picture: the array is height x width, or height x width x channels; with planes=True a list of arrays."""

    array: object
    colour: str  # "grey", "rgb" or "cmyk"; of planes that of the file, such as "ycbcr"
    precision: int  # bits of a sample
    warnings: list
    is_damaged: bool  # some of the picture is missing
    metadata: Metadata


class Difference(NamedTuple):
    """Of one channel."""

    psnr: float  # decibels; inf where nothing differs
    mean_squared_error: float
    largest_error: int


class Comparison(NamedTuple):
    """How far two pictures are apart, all channels taken together."""

    psnr: float
    mean_squared_error: float
    largest_error: int
    channels: list  # of Difference


def decode(source, *, reduce=0, layers=0, smooth=True, region=None, planes=False):
    """The picture in a file of JPEG, JPEG 2000, PNG, PGM, PPM, PAM or PGX: its bytes, or its path.

    reduce halves a JPEG 2000 picture so many times, layers decodes so many of its quality layers (0: all), smooth
    interpolates the chroma of JPEG. region is (x, y, width, height) in pixels of the whole picture, before it is reduced;
    what lies beyond the picture is cut off. Of a JPEG 2000 file only what the region needs is decoded. planes gives the
    components as they are coded, of their own sizes, without conversion of colours.

    Raises Error, with the position in the file, where there is no picture."""
    if planes:
        *decoded, metadata = _qeljx.decode_planes(source, reduce=reduce, layers=layers, region=region)
    else:
        *decoded, metadata = _qeljx.decode(source, reduce=reduce, layers=layers, smooth=smooth, region=region)
    return Decoded(*decoded, _metadata(*metadata))


def info(source):
    """What the headers of a file say, as a dict: format ("jpeg", "jp2", "j2k", "png", "pnm" or "pgx"), width, height,
    precision, colour and metadata. Of JPEG also components, process, scans, restart_interval and predictor; of JPEG 2000
    components, tiles, tile_size, levels, layers, reversible, progression and warnings."""
    about = _qeljx.info(source)
    about["metadata"] = _metadata(*about["metadata"])
    return about


def _jpeg(array, *, quality=90, sampling="420", optimize=False, progressive=False, restart=0, lossless=False, predictor=1,
          precision=0, metadata=None):
    return _qeljx.encode_jpeg(array, quality, sampling, optimize, progressive, restart, lossless, predictor, precision,
                               metadata)


def _j2k(is_jp2):
    def encode_j2k(array, *, quality=None, rate=None, psnr=None, lossless=False, layers=1, tile=None, precision=0,
                   metadata=None):
        return _qeljx.encode_j2k(array, quality, rate, psnr, lossless, layers, tile, is_jp2, precision, metadata)

    return encode_j2k


_ENCODERS = {"jpeg": _jpeg, "jpg": _jpeg, "jp2": _j2k(True), "j2k": _j2k(False)}


def _encode(array, format, **options):
    """The file, and lines on what is not kept of the metadata."""
    if format not in _ENCODERS:
        raise ValueError(f"the format is one of {', '.join(_ENCODERS)}")
    return _ENCODERS[format](array, **options)


def encode(array, format="jpeg", **options):
    """The bytes of a file: an array of uint8 or uint16, grey (2 dimensions), RGB or CMYK (3 or 4 channels).

    "jpeg": quality, sampling ("444", "422", "440", "420"), optimize, progressive, restart, lossless, predictor.
    "jp2" and "j2k": quality, rate (bits per pixel), psnr (decibels) or lossless; layers; tile, (width, height) of tiles.
    All: precision, in bits, where it is less than the type's; metadata, a Metadata such as that of a decoded picture. What
    of it the format has no room for, or does not suit the picture, is left out with a UserWarning."""
    data, left_out = _encode(array, format, **options)
    for line in left_out:
        warnings.warn(line, stacklevel=2)
    return data


def compare(a, b, precision=0):
    """How far two arrays of one shape are apart. precision, in bits, where it is less than the type's."""
    *whole, channels = _qeljx.compare(a, b, precision)
    return Comparison(*whole, [Difference(*channel) for channel in channels])


# Threads do not survive a fork, and their runtime waits for them in vain: a child works on one.
os.register_at_fork(after_in_child=lambda: set_threads(1))
