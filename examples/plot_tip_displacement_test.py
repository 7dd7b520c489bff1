"""plot_tip_displacement.py run on a results file freshly written by the
results_file example, whose tip deflection is known in closed form: the
bending line of a cantilever under an end load, -0.02 at the free end in the
last of 4 steps, each step's load factor step / 4 and its deflection
proportional to it. CTest runs this with PYTHONPATH and ZQA_RESULTS_FILE set
(examples/CMakeLists.txt); it passes with and without Matplotlib.
"""

import importlib.util
import os
import subprocess
import sys

import pytest

import zqaromcore

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "plot_tip_displacement.py")
STEPS = 4
TIP_DEFLECTION = -0.02
BEAM_LENGTH = 8.0
FACE_CENTRE = (1.0, 1.0)
PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def run_script(*arguments):
    return subprocess.run([sys.executable, SCRIPT] + [str(word) for word in arguments], capture_output=True,
                          text=True)


@pytest.fixture
def results(tmp_path):
    """A results file written by the example program, in a folder of its own."""
    program = os.environ.get("ZQA_RESULTS_FILE")
    if not program:
        pytest.skip("ZQA_RESULTS_FILE is not set: run the test through ctest")
    path = tmp_path / "beam.zdb"
    subprocess.run([program, str(path)], check=True, capture_output=True)
    return path


def check_heading(line, path):
    """The first line: the file, the tip node at the free end's centre and the number of steps."""
    assert line.startswith("%s: tip node " % path), line
    position = line.split(" at (")[1].split(")")[0]
    x, y, z = (float(value) for value in position.split(","))
    assert (x, (y, z)) == (BEAM_LENGTH, FACE_CENTRE), line
    assert line.endswith(", %d load steps" % STEPS), line


def check_table(lines):
    """The table's rows: every step's load factor and the closed form's tip deflection."""
    assert lines[0].split() == ["step", "load", "tip", "uz"]
    rows = [line.split() for line in lines[1:]]
    assert [int(row[0]) for row in rows] == list(range(1, STEPS + 1))
    for step, load, uz in rows:
        assert float(load) == pytest.approx(int(step) / STEPS, abs=1e-3)
        assert float(uz) == pytest.approx(TIP_DEFLECTION * int(step) / STEPS, abs=1e-6)


def test_table_gives_the_tip_deflection_of_every_step(results):
    done = run_script(results, "--table")
    assert done.returncode == 0, done.stderr
    lines = done.stdout.splitlines()
    check_heading(lines[0], results)
    check_table(lines[1:])
    assert not list(results.parent.glob("*.png"))


def test_plots_beside_the_results_or_where_asked_when_matplotlib_is_there(results, tmp_path):
    default_png = results.parent / "beam-tip.png"
    chosen_png = tmp_path / "chosen" / "tip.png"
    chosen_png.parent.mkdir()
    for arguments, png in (([results], default_png), ([results, "--png", chosen_png], chosen_png)):
        done = run_script(*arguments)
        assert done.returncode == 0, done.stderr
        lines = done.stdout.splitlines()
        check_heading(lines[0], results)
        if importlib.util.find_spec("matplotlib") is None:
            check_table(lines[1:])
            assert not png.exists()
        else:
            assert lines[1:] == ["plotted the tip's uz over the load factor into %s" % png]
            assert png.read_bytes().startswith(PNG_SIGNATURE)


def test_a_file_that_is_not_the_demos_ends_with_a_message_naming_it(tmp_path):
    missing = tmp_path / "missing.zdb"
    not_a_database = tmp_path / "notes.zdb"
    not_a_database.write_text("not a database\n")
    without_steps = tmp_path / "mesh.zdb"
    with zqaromcore.open(without_steps, "w") as mesh:
        mesh.create_table("Nodes", {"id": [1, 2], "x": [0.0, 1.0], "y": [0.0, 0.0], "z": [0.0, 0.0]})
    for path in (missing, not_a_database, without_steps):
        done = run_script(path)
        assert done.returncode == 1
        assert done.stdout == ""
        assert done.stderr.startswith("plot_tip_displacement: ") and str(path) in done.stderr, done.stderr
        assert "Traceback" not in done.stderr
