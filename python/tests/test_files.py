"""Loading and saving: paths, bytes, file objects, and what is wrong with them."""

import contextlib
import errno
import io
import os
import pickle

import fcurvelib as fc
import pytest
from hypothesis import given
from hypothesis import strategies as st
from strategies import curves


@given(st.lists(curves(), max_size=2), st.sampled_from(["xml", "binary"]))
def test_what_is_dumped_loads_again(many, format):
    for curve in many:  # the selection, which is an editor's, stays out of files
        for part in [curve, *curve.keys, *curve.segments, *(key.in_tangent for key in curve.keys)]:
            part.properties = {key: value for key, value in part.properties.items() if not key.startswith("fc_")}
    document = fc.dumps(many, format)
    assert fc.loads(document) == fc.Container(many) == fc.loads(document, format)
    assert fc.dumps(fc.loads(document), format) == document


def test_paths_and_file_objects(tmp_path, ball, data):
    for target in (tmp_path / "a.fcrvx", str(tmp_path / "ä b.FCRVB")):
        fc.save(ball, target)
        assert fc.load(target)["height"] == ball
    fc.save([ball, fc.Curve("b")], tmp_path / "c.anything", format="binary")
    with open(tmp_path / "c.anything", "rb") as file:
        assert list(fc.load(file)) == ["height", "b"]
    buffer = io.BytesIO()
    fc.save(fc.load(data / "ball.fcrvx"), buffer)
    assert fc.loads(memoryview(buffer.getvalue())) == fc.load(data / "ball.fcrvx")
    assert fc.load(io.StringIO(buffer.getvalue().decode())) == fc.loads(buffer.getvalue().decode())
    assert len(fc.load(data / "camera.chan", format="hchan")) == 6

    class Short(io.RawIOBase):
        def write(self, piece):
            taken.append(bytes(piece[:100]))
            return len(taken[-1]) if len(taken) < limit else 0

    for limit in (10**6, 2):
        taken = []
        with pytest.raises(fc.FileError) if limit == 2 else contextlib.nullcontext():
            fc.save(ball, Short())
    assert len(taken) == 2
    taken, limit = [], 10**6
    fc.save(ball, Short())
    assert b"".join(taken) == fc.dumps(ball)


@pytest.mark.parametrize("declared", ["ISO-8859-1", "UTF-8", "utf-16", "none"])
def test_text_is_decoded_whatever_it_declares(tmp_path, declared):
    document = fc.dumps(fc.Curve("é€", [(1, 2)])).decode().replace('encoding="UTF-8"', f"encoding = '{declared}'")
    assert declared in document and list(fc.loads(document)) == ["é€"] == list(fc.load(io.StringIO("\ufeff" + document)))
    with pytest.raises(fc.FormatError) as raised:
        fc.loads(document.replace("?>", "?><wrong>", 1), "xml")
    assert raised.value.column == document.index("?>") + 3
    if declared == "ISO-8859-1":
        assert list(fc.loads(document.replace("€", "").encode(declared))) == ["é"]


def test_a_wrong_document_tells_file_line_and_column(tmp_path):
    file = tmp_path / "walk.fcrvt"
    file.write_text('fcurvetext 1.0\ncurve "a" {\n  key one 2\n}\n')
    with pytest.raises(fc.FormatError) as raised:
        fc.load(file)
    error = raised.value
    assert isinstance(error, (fc.Error, ValueError)) and (error.file, error.line) == (str(file), 3)
    assert error.column and str(error) == f"{file}:3:{error.column}: {error.message}" and error.kind
    again = pickle.loads(pickle.dumps(error))
    assert (str(again), again.line, again.kind) == (str(error), 3, error.kind)
    with pytest.raises(fc.FormatError) as raised:
        fc.loads(file.read_bytes())
    assert raised.value.file is None and raised.value.line == 3


def test_what_cannot_be_read_or_written_leaves_old_files(tmp_path, ball):
    file = tmp_path / "old.fcrvx"
    file.write_text("old")
    with pytest.raises(fc.FormatError, match="old.fcrvx:1:"):  # as its name says what it should be
        fc.load(file)
    with pytest.raises(fc.UnknownFormatError):
        fc.loads("old")
    with pytest.raises(fc.FormatError):
        fc.load(file, format="xml")
    with pytest.raises(fc.UnknownFormatError):
        fc.loads(b"", format="nonsense")
    with pytest.raises(fc.UnknownFormatError):
        fc.save(ball, file, format="text of none")
    with pytest.raises(fc.UnknownFormatError, match="extension"):
        fc.save(ball, tmp_path / "a.txt")
    ball.name = "n" * (1 << 21)
    with pytest.raises(fc.FormatError):
        fc.save(ball, file)
    assert file.read_text() == "old" and [it.name for it in tmp_path.iterdir()] == ["old.fcrvx"]
    for wrong in (tmp_path / "none.fcrvx", str(tmp_path / "no" / "folder.fcrvx")):
        with pytest.raises(FileNotFoundError) as raised:
            fc.load(wrong)
        assert isinstance(raised.value, fc.Error) and raised.value.file == str(wrong)
        assert str(pickle.loads(pickle.dumps(raised.value))) == str(raised.value)
    with pytest.raises(FileNotFoundError):
        fc.save(fc.Curve(), tmp_path / "no" / "folder.fcrvx")
    with pytest.raises(fc.FileError):
        fc.load(tmp_path)
    with pytest.raises(fc.FileError) as raised:
        fc.save(fc.Curve(), "/dev/full", format="xml")
    assert (raised.value.errno, raised.value.working_file) == (errno.ENOSPC, None)
    assert raised.value.strerror in str(raised.value)


def test_saving_keeps_links_and_permissions_and_can_be_ended(tmp_path, ball):
    file, link = tmp_path / "a.fcrvx", tmp_path / "link.fcrvx"
    fc.save(ball, file)
    file.chmod(0o640)
    link.symlink_to("a.fcrvx")
    shares = []
    fc.save([ball, fc.Curve("b")], os.fsencode(link), progress=shares.append)
    assert shares == sorted(shares) and shares[-1] == 1
    assert link.is_symlink() and file.stat().st_mode & 0o777 == 0o640 and list(fc.load(file)) == ["height", "b"]

    def end(share):
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        fc.save(fc.Curve(), link, progress=end)
    with pytest.raises(KeyboardInterrupt):
        fc.load(link, progress=end)
    assert list(fc.load(link, progress=shares.append)) == ["height", "b"] and shares[-1] == 1
    assert sorted(it.name for it in tmp_path.iterdir()) == ["a.fcrvx", "link.fcrvx"]
