"""What docs/python.md and the README show runs and prints what they say; the examples do what they are for."""

import contextlib
import io
import pathlib
import re
import shutil
import subprocess
import sys

import fcurvelib as fc
import pytest

TOP = pathlib.Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"^```python\n(.*?)^```\n(?:\n```\n(.*?)^```\n)?", re.MULTILINE | re.DOTALL)


@pytest.mark.parametrize("page", ["docs/python.md", "README.md"])
def test_snippets(page, tmp_path, monkeypatch):
    shutil.copytree(TOP / "examples" / "data", tmp_path / "examples" / "data")
    shutil.copytree(TOP / "examples" / "data", tmp_path, dirs_exist_ok=True)
    monkeypatch.chdir(tmp_path)
    blocks, names = BLOCK.findall((TOP / page).read_text()), {}
    assert blocks
    for code, shown in blocks:
        out = io.StringIO()
        with contextlib.redirect_stdout(out):
            exec(compile(code, page, "exec"), names)
        assert out.getvalue() == shown


def run(name, *arguments):
    return subprocess.run([sys.executable, TOP / "examples" / "python" / name, *map(str, arguments)], text=True,
                          capture_output=True)


def test_mocap_is_cleaned(tmp_path, data):
    ran = run("clean_mocap.py", data / "camera.chan", tmp_path / "camera.fcrvx", "--tolerance", 0.02)
    assert ran.returncode == 0, ran.stderr
    cleaned, table = fc.load(tmp_path / "camera.fcrvx"), fc.load(data / "camera.chan")
    assert list(cleaned) == ["tx", "ty", "tz", "rx", "ry", "rz"] and ran.stdout.count("keys") == 6
    for curve, column in zip(cleaned.values(), table.values()):
        assert len(curve.keys) < len(column.keys) / 4
        assert max(abs((curve(key.x) - key.y + 180) % 360 - 180) for key in column.keys) < 0.0201


def test_a_folder_is_converted(tmp_path, data):
    (tmp_path / "wrong.fcrvx").write_text("<fcurves>")
    ran = run("convert_all.py", tmp_path / "wrong.fcrvx", data / "ball.fcrvx", data / "ends.fcrvx", "--to", "csv",
              "--into", tmp_path / "out")
    assert ran.returncode == 1 and str(tmp_path / "wrong.fcrvx") in ran.stderr
    assert {it.name for it in (tmp_path / "out").iterdir()} == {"ball.csv", "ends.csv"}
    assert "ends.csv: nothing" not in ran.stdout and list(fc.load(tmp_path / "out" / "ball.csv", "csv"))


def test_a_drag_is_drawn_step_by_step(tmp_path):
    ran = run("live_plot.py", "--into", tmp_path, "--steps", 5)
    assert ran.returncode == 0, ran.stderr
    pictures = sorted(it.read_text() for it in tmp_path.iterdir())
    assert len(pictures) == 6 and len(set(pictures)) == 5 and all("<svg" in it for it in pictures)


def test_reports_tell_what_was_lost(tmp_path, ball):
    same = fc.convert(io.BytesIO(fc.dumps(ball)), tmp_path / "a.fcrvb")
    assert not same and len(same) == 0 and str(same) == "" and fc.load(tmp_path / "a.fcrvb")["height"] == ball
    ball.properties["note"] = "x"
    ball.interpolators[1] = "sin(x)"
    fc.save(ball, tmp_path / "a.fcrvx")
    report = fc.convert(tmp_path / "a.fcrvx", tmp_path / "a.csv", "csv", frame_rate=25)
    assert report and {loss.curve for loss in report} <= {"", "height"} and len(str(report).splitlines()) == len(report)
    assert {"what", "remedy", "places"} <= set(__import__("json").loads(report.to_json())["losses"][0])
    assert report[:] == list(report) and report.index(report[-1]) == len(report) - 1 and report[-1] in report
    for wrong in ({"frame_rate": -1}, {"frame_rate": float("nan")}, {"tolerance": -1e-9}, {"settings": {"csv.nosuch": "1"}}):
        with pytest.raises(ValueError, match=next(iter(wrong)).rstrip("s")):
            fc.convert(tmp_path / "a.fcrvx", tmp_path / "b.csv", **wrong)
    sources = "".join(it.read_text() for it in (TOP / "interchange").rglob("*.cpp"))
    with pytest.raises(ValueError) as unknown:
        fc.convert(tmp_path / "a.fcrvx", tmp_path / "b.csv", settings={"csv.nosuch": "1"})
    known = re.findall(r"[a-z]+[.][a-z]+", str(unknown.value).split("there are")[1])
    assert set(re.findall(r'setting\("([a-z.]+)"\)', sources)) == set(known)
    assert all(loss.what and loss.remedy and loss.count >= 1 and str(loss) for loss in report)
