"""A reader in this process, of the file's path or of its URL, beside a writer in another, a C++
program (zqapy_StepWriter.cpp) or Python (step_writer.py), that appends rows to a table and to an
array in steps and flushes after each: first one step at a time, as the test asks, then as fast as
the writer can.

A database flush writes its linkages in several writes. A reader that snaps while they land sees
every object as one flush or another left it: each row as written, but the table and the array
possibly a step apart. Only a writer that marks its transactions (the marker directory beside the
file, which the C++ writer sets around each step and the package has no way to set) gives a reader
of the path whole steps; a URL shows no marker."""

import os
import subprocess
import sys
import threading

import numpy as np
import pytest

import zqaromcore

ROWS_PER_STEP = 4
# Steps that a writer runs freely, fewer where each makes and removes the marker directory: some
# milliseconds on a slow disk.
FREE_RUNNING_STEPS = {"C++": 300, "Python": 3000}
# Generous: the writer may run under the sanitizers on a busy machine.
REPLY_SECONDS = 120


class Writer:
    """The writer process, driven line by line through its standard input and output."""

    def __init__(self, kind, command):
        self.kind = kind
        self.marks_transactions = kind == "C++"
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True)

    def send(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()

    def reply(self):
        """The writer's next line, waited for in a thread so that a silent writer fails the test."""
        answer = []
        reader = threading.Thread(target=lambda: answer.append(self.process.stdout.readline().strip()))
        reader.start()
        reader.join(REPLY_SECONDS)
        assert answer and answer[0], "the writer did not answer: %s" % self.finish()
        return answer[0]

    def ask(self, command):
        self.send(command)
        return self.reply()

    def finish(self):
        """Ends the writer's input and waits for it; its standard error."""
        self.process.stdin.close()
        error = self.process.stderr.read()
        self.process.wait(REPLY_SECONDS)
        return error


def start_writer(programs, path, kind):
    """The writer of that kind, and the handles of its table and array once both are in the file."""
    if kind == "C++":
        writer = Writer(kind, [programs.test_program("zqapy_StepWriter"), str(path), str(ROWS_PER_STEP)])
    else:
        script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "step_writer.py")
        writer = Writer(kind, [sys.executable, script, str(path), str(ROWS_PER_STEP)])
    ready = writer.reply().split()
    assert ready[0] == "ready", ready
    return writer, int(ready[1]), int(ready[2])


@pytest.fixture(params=["C++", "Python"])
def writer(request, programs, tmp_path):
    """(writer, path, table handle, array handle)."""
    path = tmp_path / "steps.zdb"
    process, table, array = start_writer(programs, path, request.param)
    yield process, path, table, array
    error = process.finish()
    assert process.process.returncode == 0, error


@pytest.fixture(params=["path", "URL"])
def reader_name(request, programs, monkeypatch):
    """How the reader names the writer's file: a function of its path."""
    if request.param == "path":
        return str
    monkeypatch.setenv("PATH", programs.assistant_directory + os.pathsep + os.environ.get("PATH", ""))
    return lambda path: "zbxrdb://localhost/" + str(path.resolve())


def check_table(table, rows):
    """The table holds exactly rows rows, each as the writers write it."""
    assert len(table) == rows
    index = np.arange(rows)
    columns = table.read()
    assert not any(np.ma.getmaskarray(values).any() for values in columns.values())
    np.testing.assert_array_equal(columns["step"], index // ROWS_PER_STEP + 1)
    np.testing.assert_array_equal(columns["index"], index)
    np.testing.assert_array_equal(columns["value"], index * 0.5)
    assert columns["label"].tolist() == ["row %d" % row for row in index]


def check_array(array, rows):
    """The array holds exactly rows rows, each as the writers write it."""
    assert len(array) == rows
    index = np.arange(rows)
    np.testing.assert_array_equal(array.read(), np.column_stack([index * 0.25, -index.astype(np.float64)]))


def check_rows(table, array, rows):
    check_table(table, rows)
    check_array(array, rows)


def test_a_reader_sees_each_flush_after_its_snap_and_not_before(writer, reader_name):
    process, path, table_handle, array_handle = writer
    with zqaromcore.open(reader_name(path)) as f:
        # Opened before any rows were written, and followed through every flush.
        table, array = f.table(table_handle), f.array(array_handle)
        check_rows(table, array, 0)
        flushes = f.flush_count
        for step in range(1, 5):
            assert not f.snap(), "snap() before step %d's flush" % step
            assert process.ask("step") == "flushed %d" % step
            check_rows(table, array, (step - 1) * ROWS_PER_STEP)
            assert f.snap(), "snap() after step %d's flush" % step
            assert f.flush_count == flushes + step
            check_rows(table, array, step * ROWS_PER_STEP)
            check_rows(f.table(table_handle), f.array(array_handle), step * ROWS_PER_STEP)
            assert not f.snap()


def test_rows_flushed_without_their_database_flush_stay_unseen_by_table_and_array(programs, tmp_path, reader_name):
    # The writer flushes the table and the array, which writes their rows and their own change
    # counts, and only later the database flush that admits the rows. A snap in between takes in
    # the flush before; the next one the rows, in the array as in the table, although the array's
    # change count did not move in between.
    path = tmp_path / "steps.zdb"
    process, table_handle, array_handle = start_writer(programs, path, "C++")
    with zqaromcore.open(reader_name(path)) as f:
        table, array = f.table(table_handle), f.array(array_handle)
        assert process.ask("step") == "flushed 1"
        assert process.ask("append") == "appended 2"
        assert f.snap()
        check_rows(table, array, ROWS_PER_STEP)
        assert not f.snap()
        check_rows(table, array, ROWS_PER_STEP)
        assert process.ask("flush") == "flushed 2"
        assert f.snap()
        check_rows(table, array, 2 * ROWS_PER_STEP)
    error = process.finish()
    assert process.process.returncode == 0, error


def test_every_snapshot_beside_a_free_running_writer_holds_rows_as_written(writer, reader_name):
    process, path, table_handle, array_handle = writer
    name = reader_name(path)
    whole_steps = process.marks_transactions and not name.startswith("zbxrdb:")
    steps = FREE_RUNNING_STEPS[process.kind]
    with zqaromcore.open(name) as f:
        table, array = f.table(table_handle), f.array(array_handle)
        process.send("run %d" % steps)
        finished = threading.Event()
        answer = []

        def wait_for_the_writer():
            answer.append(process.reply())
            finished.set()

        waiting = threading.Thread(target=wait_for_the_writer)
        waiting.start()
        seen = [(0, 0)]
        while True:
            # Asked before the snap, so that the last snap comes after the writer's last flush.
            last = finished.is_set()
            if f.snap():
                rows = (len(table), len(array))
                assert rows[0] >= seen[-1][0] and rows[1] >= seen[-1][1], (rows, seen[-1])
                check_table(table, rows[0])
                check_array(array, rows[1])
                if whole_steps:
                    assert rows[0] == rows[1] and rows[0] % ROWS_PER_STEP == 0, rows
                seen.append(rows)
            if last:
                break
        waiting.join()
        assert answer == ["ran %d" % steps]
        assert seen[-1] == (steps * ROWS_PER_STEP,) * 2
        print("%d views of the file while the writer ran" % (len(seen) - 1))
