# SPDX-License-Identifier: Apache-2.0
"""The Python module: the tool's own results, exceptions, forked children, and the primitives against each other.
QELPIC names the tool."""
import multiprocessing
import os
import subprocess

import numpy as np
import pytest
import qeljx
from qeljx import primitives


def drawn(height, width, channels=3):
    y, x = np.mgrid[0:height, 0:width]
    waves = [128 + 70 * np.sin(x * (0.05 + 0.02 * c)) + 50 * np.cos(y * 0.07 + c) for c in range(channels)]
    noise = np.random.default_rng(7).integers(-9, 10, (height, width, channels))
    return np.clip(np.stack(waves, 2) + noise, 0, 255).astype(np.uint8)


def store(path, array):
    path.write_bytes(f"P6\n{array.shape[1]} {array.shape[0]}\n255\n".encode() + array.tobytes())


def tool(*arguments):
    subprocess.run([os.environ["QELPIC"], *map(str, arguments)], check=True)


@pytest.mark.parametrize(
    "format, options, arguments",
    [
        ("jpeg", {"quality": 80}, ["--quality", 80]),
        ("jpeg", {"sampling": "444", "progressive": True}, ["--sampling", "444", "--progressive"]),
        ("jpeg", {"lossless": True, "predictor": 4}, ["--lossless", "--predictor", 4]),
        ("jp2", {"lossless": True}, ["--lossless"]),
        ("jp2", {"rate": 2.0}, ["--rate", 2]),
    ],
)
def test_encodes_what_the_tool_does(tmp_path, format, options, arguments):
    picture = drawn(90, 121)
    store(tmp_path / "a.ppm", picture)
    tool("encode", tmp_path / "a.ppm", tmp_path / f"a.{format}", *arguments)
    data = qeljx.encode(picture, format, **options)
    assert data == (tmp_path / f"a.{format}").read_bytes()
    tool("decode", tmp_path / f"a.{format}", tmp_path / "b.ppm")
    decoded = qeljx.decode(data)
    assert (decoded.colour, decoded.precision, decoded.is_damaged) == ("rgb", 8, False)
    assert (tmp_path / "b.ppm").read_bytes().endswith(decoded.array.tobytes())
    assert np.array_equal(qeljx.decode(tmp_path / f"a.{format}").array, decoded.array)
    if options.get("lossless"):
        assert qeljx.compare(picture, decoded.array).largest_error == 0


def test_other_layouts_and_depths():
    picture = drawn(64, 80)
    flipped = picture[::-1, ::-1]
    assert np.array_equal(qeljx.decode(qeljx.encode(flipped, "jp2", lossless=True)).array, flipped)
    deep = picture[:, :, 0].astype(np.uint16) * 16
    decoded = qeljx.decode(qeljx.encode(deep, "jp2", lossless=True, precision=12))
    assert decoded.precision == 12 and np.array_equal(decoded.array, deep)
    assert qeljx.decode(qeljx.encode(picture, "jp2", lossless=True), reduce=2).array.shape == (16, 20, 3)


def test_regions():
    picture = drawn(300, 400)
    assert np.array_equal(qeljx.decode(qeljx.encode(picture), region=(390, 10, 99, 20)).array,
                          qeljx.decode(qeljx.encode(picture)).array[10:30, 390:])
    data = qeljx.encode(picture, "jp2", rate=3)
    for reduce in (0, 2):
        part = qeljx.decode(data, reduce=reduce, region=(40, 200, 60, 1000)).array
        assert np.array_equal(part, qeljx.decode(data, reduce=reduce).array[200 >> reduce :, 40 >> reduce : 100 >> reduce])
    for file in (data, qeljx.encode(picture)):
        for wrong in ((400, 0, 5, 5), (0, 0, 0, 5)):
            with pytest.raises(ValueError):
                qeljx.decode(file, region=wrong)


def test_planes(tmp_path):
    picture = drawn(61, 83)
    coded = qeljx.decode(qeljx.encode(picture), planes=True)
    assert [plane.shape for plane in coded.array] == [(61, 83), (31, 42), (31, 42)]
    assert coded.colour == "ycbcr" and np.abs(coded.array[0] - picture @ [0.299, 0.587, 0.114]).mean() < 3
    data = qeljx.encode(picture, "jp2", lossless=True)
    assert np.array_equal(np.stack(qeljx.decode(data, planes=True).array, 2), picture)
    for reduce in (0, 1):
        planes = qeljx.decode(data, planes=True, reduce=reduce, region=(20, 10, 30, 12)).array
        assert np.array_equal(np.stack(planes, 2), qeljx.decode(data, reduce=reduce, region=(20, 10, 30, 12)).array)
    with pytest.raises(ValueError):
        qeljx.decode(qeljx.encode(picture), planes=True, reduce=1)


def test_info_is_what_the_tool_says(tmp_path):
    picture = drawn(61, 83)
    (tmp_path / "a.jpg").write_bytes(qeljx.encode(picture, progressive=True))
    (tmp_path / "a.jp2").write_bytes(qeljx.encode(picture, "jp2", layers=3))
    store(tmp_path / "a.ppm", picture)
    for name in ("a.jpg", "a.jp2", "a.ppm"):
        about = qeljx.info(tmp_path / name)
        assert about == qeljx.info((tmp_path / name).read_bytes())
        said = subprocess.run([os.environ["QELPIC"], "info", tmp_path / name], capture_output=True, text=True).stdout
        for text in (f"{about['width']} x {about['height']}", f"{about['precision']} bits"):
            assert text in said
        for text in ("process", "progression"):
            assert about.get(text, "") in said
        for component in about.get("components", ()):
            assert f"{component['width']} x {component['height']}" in said
    assert about == {"format": "pnm", "width": 83, "height": 61, "precision": 8, "colour": "rgb",
                     "metadata": qeljx.Metadata()}
    assert qeljx.info(tmp_path / "a.jpg")["scans"] == 10 and qeljx.info(tmp_path / "a.jp2")["layers"] == 3


def test_metadata_goes_from_format_to_format(tmp_path):
    icc = bytearray(144) + np.random.default_rng(1).bytes(112)  # a profile of one tag
    for at, field in ((2, b"\1\0\0\0\0\0\4"), (12, b"mntrRGB XYZ "), (36, b"acsp"), (70, b"\xf6\xd6\0\1\0\0\0\0\xd3\x2d"),
                      (131, b"\1desc\0\0\0\x90\0\0\0\x70")):
        icc[at : at + len(field)] = field
    exif = b"MM\0*\0\0\0\x08\0\1\x01\x12\0\3\0\0\0\1\0\6\0\0\0\0\0\0"
    given = qeljx.Metadata(bytes(icc), exif, b"<x:xmpmeta/>", qeljx.Density.of_dpi(300), ("one", "tw\udce9"))
    picture = drawn(20, 30)

    def is_given(metadata):
        assert metadata._replace(density=None) == given._replace(density=None)
        assert metadata.density.per_metre and metadata.density.dpi == pytest.approx((300, 300), abs=0.02)

    for format in ("jpeg", "jp2"):
        path, png, back = (tmp_path / f"{format}.{end}" for end in (format, "png", "jp2"))
        path.write_bytes(qeljx.encode(picture, format, metadata=given))
        is_given(qeljx.decode(path).metadata)
        is_given(qeljx.decode(path, planes=True).metadata)
        is_given(qeljx.info(path)["metadata"])
        said = subprocess.run([os.environ["QELPIC"], "info", path], capture_output=True).stdout
        for line in (b"ICC profile      256 bytes", b"orientation 6", b"XMP              12 bytes", b"300 x 300", b" one\n"):
            assert line in said
        tool("decode", path, png)
        loaded = qeljx.decode(png).metadata
        back.write_bytes(qeljx.encode(picture, "jp2", lossless=True, metadata=loaded))
        tool("encode", png, tmp_path / "tool.jp2", "--lossless")
        assert qeljx.decode(tmp_path / "tool.jp2").metadata == qeljx.decode(back).metadata
        is_given(loaded)
    assert qeljx.decode(qeljx.encode(picture)).metadata == qeljx.Metadata()


def test_metadata_without_room(recwarn):
    given = qeljx.Metadata(b"no profile", b"x" * 65528, density=qeljx.Density(1, 2), comments=["kept"], others=["a thing"])
    picture = drawn(20, 30)
    for format, named in (("jpeg", ("EXIF",)), ("jp2", ("the aspect ratio",)), ("j2k", ("EXIF", "the aspect ratio"))):
        metadata = qeljx.decode(qeljx.encode(picture, format, metadata=given)).metadata
        said = recwarn.pop(UserWarning)
        assert said.filename == __file__ and not recwarn.list
        for name in (*named, "the ICC profile", "a thing"):
            assert name in str(said.message)
        assert metadata.comments == ("kept",) and not metadata.icc
    for wrong in (qeljx.Metadata(density=qeljx.Density(0, 1)), qeljx.Metadata(icc="text"), {"icc": b""}):
        with pytest.raises((ValueError, TypeError, AttributeError)):
            qeljx.encode(picture, metadata=wrong)


def test_compares_each_channel():
    a = drawn(20, 30)
    b = a.copy()
    b[3, 4, 1] ^= 255
    comparison = qeljx.compare(a, b)
    assert [channel.largest_error > 0 for channel in comparison.channels] == [False, True, False]
    error = (a.astype(float) - b) ** 2
    assert comparison.mean_squared_error == pytest.approx(error.mean())
    assert comparison.channels[1].psnr == pytest.approx(10 * np.log10(255**2 / error[:, :, 1].mean()))


def test_errors():
    data = qeljx.encode(drawn(64, 64))
    with pytest.raises(qeljx.Error) as caught:
        qeljx.decode(data[:30])
    assert caught.value.position is not None
    with pytest.raises(qeljx.Error):
        qeljx.decode("/no/such/file")
    damaged = qeljx.decode(data[: len(data) // 2])
    assert damaged.is_damaged and damaged.warnings
    for wrong in (np.zeros((4, 4), np.float32), np.zeros((4, 4, 2), np.uint8), np.zeros(4, np.uint8)):
        with pytest.raises(ValueError):
            qeljx.encode(wrong)
    with pytest.raises(ValueError):
        qeljx.encode(drawn(8, 8), "gif")
    with pytest.raises(RuntimeError, match="qelStsBadArgErr"):
        primitives.predict(np.zeros((2, 2), np.int16), predictor=9)


def test_forked_children_work():
    picture = drawn(700, 900)
    data = qeljx.encode(picture)
    expected = qeljx.decode(data).array
    with multiprocessing.get_context("fork").Pool(2) as pool:
        results = pool.map_async(qeljx.decode, [data] * 4).get(timeout=60)
    assert all(np.array_equal(result.array, expected) for result in results)


def test_jpeg_primitives():
    plane = drawn(64, 96)[:, :, 0]
    steps = primitives.scale_steps(np.full(64, 16, np.uint8), 90)
    blocks = primitives.forward_dct(plane, steps)
    assert blocks.shape == (8, 12, 8, 8)
    back = primitives.inverse_dct(blocks, steps)
    assert np.abs(back.astype(int) - plane).max() < 16
    dc, ac = map(primitives.huffman_table, primitives.huffman_statistics(blocks))
    data = primitives.huffman_encode(blocks, dc, ac)
    assert np.array_equal(primitives.huffman_decode(data, 96, dc, ac), blocks.reshape(96, 8, 8))
    samples = plane.astype(np.int16)
    for predictor in range(1, 8):
        differences = primitives.predict(samples, predictor)
        assert np.array_equal(primitives.reconstruct(differences, predictor), samples)


def test_colours_and_sampling():
    rgb = drawn(33, 50)
    planes = primitives.rgb_to_ycbcr(rgb)
    luma = rgb @ np.array([0.299, 0.587, 0.114])
    assert np.abs(planes[0] - luma).max() < 1.1
    assert np.abs(primitives.ycbcr_to_rgb(planes).astype(int) - rgb).max() <= 3
    half = primitives.downsample(planes[0])
    means = planes[0][:32, :50].astype(int).reshape(16, 2, 25, 2).sum((1, 3))
    assert np.array_equal(half, (means + 3) >> 2)
    assert primitives.upsample(half).shape == (32, 50)
    assert np.array_equal(primitives.upsample(np.array([[10, 20]], np.uint8), False), [[10, 13, 17, 20]])


def test_jpeg2000_primitives():
    planes = np.moveaxis(drawn(61, 47), 2, 0).astype(np.int32) - 128
    assert np.array_equal(primitives.inverse_rct(primitives.rct(planes)), planes)
    assert np.allclose(primitives.inverse_ict(primitives.ict(planes.astype(np.float32))), planes, atol=0.05)
    for levels in (0, 1, 3, 6):
        coefficients = primitives.wavelet53(planes[0], levels)
        assert np.array_equal(primitives.inverse_wavelet53(coefficients, levels), planes[0])
    wide = planes[0] * 64
    assert np.abs(primitives.inverse_wavelet97(primitives.wavelet97(wide, 3), 3) - wide).max() <= 24
    for style in (0, 0x2, 0x4 | 0x10):
        block = primitives.encode_code_block(planes[0], 0, style)
        assert len(block["rates"]) == len(block["distortions"]) == block["passes"]
        decoded = primitives.decode_code_block(block["data"], planes[0].shape, 0, block["planes"], block["passes"],
                                               block["lengths"], style)
        assert np.array_equal(decoded, planes[0])
    with pytest.raises(ValueError):
        primitives.decode_code_block(b"ab", (4, 4), 0, 1, 1, [3])
