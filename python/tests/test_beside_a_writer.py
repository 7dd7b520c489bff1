"""A reader in this process beside a writer in another, a C++ program (zqapy_StepWriter.cpp) or
Python (step_writer.py), that appends rows to a table and to an array in steps and flushes after
each: first one step at a time, as the test asks, then as fast as the writer can."""

import os
import subprocess
import sys
import threading

import numpy as np
import pytest

import zqaromcore

ROWS_PER_STEP = 4
FREE_RUNNING_STEPS = 5000
# Generous: the writer may run under the sanitizers on a busy machine.
REPLY_SECONDS = 120


class Writer:
    """The writer process, driven line by line through its standard input and output."""

    def __init__(self, command):
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

    def finish(self):
        """Ends the writer's input and waits for it; its standard error."""
        self.process.stdin.close()
        error = self.process.stderr.read()
        self.process.wait(REPLY_SECONDS)
        return error


@pytest.fixture(params=["C++", "Python"])
def writer(request, programs, tmp_path):
    """(writer, path, table handle, array handle) once the writer has made the table and the array."""
    path = tmp_path / "steps.zdb"
    if request.param == "C++":
        command = [programs.test_program("zqapy_StepWriter"), str(path), str(ROWS_PER_STEP)]
    else:
        command = [sys.executable, os.path.join(os.path.dirname(__file__), "step_writer.py"), str(path),
                   str(ROWS_PER_STEP)]
    process = Writer(command)
    ready = process.reply().split()
    assert ready[0] == "ready", ready
    yield process, path, int(ready[1]), int(ready[2])
    error = process.finish()
    assert process.process.returncode == 0, error


def check_rows(table, array, rows):
    """The table and the array hold exactly rows rows, each as the writers write it."""
    assert len(table) == rows and len(array) == rows
    index = np.arange(rows)
    columns = table.read()
    assert not any(np.ma.getmaskarray(values).any() for values in columns.values())
    np.testing.assert_array_equal(columns["step"], index // ROWS_PER_STEP + 1)
    np.testing.assert_array_equal(columns["index"], index)
    np.testing.assert_array_equal(columns["value"], index * 0.5)
    assert columns["label"].tolist() == ["row %d" % row for row in index]
    np.testing.assert_array_equal(array.read(), np.column_stack([index * 0.25, -index.astype(np.float64)]))


def test_a_reader_sees_each_flush_after_its_snap_and_not_before(writer):
    process, path, table_handle, array_handle = writer
    with zqaromcore.open(path) as f:
        # Opened before any rows were written, and followed through every flush.
        table, array = f.table(table_handle), f.array(array_handle)
        check_rows(table, array, 0)
        flushes = f.flush_count
        for step in range(1, 5):
            assert not f.snap(), "snap() before step %d's flush" % step
            process.send("step")
            assert process.reply() == "flushed %d" % step
            check_rows(table, array, (step - 1) * ROWS_PER_STEP)
            assert f.snap(), "snap() after step %d's flush" % step
            assert f.flush_count == flushes + step
            check_rows(table, array, step * ROWS_PER_STEP)
            check_rows(f.table(table_handle), f.array(array_handle), step * ROWS_PER_STEP)
            assert not f.snap()


def test_every_snapshot_beside_a_free_running_writer_holds_whole_steps_as_written(writer):
    process, path, table_handle, array_handle = writer
    with zqaromcore.open(path) as f:
        table, array = f.table(table_handle), f.array(array_handle)
        process.send("run %d" % FREE_RUNNING_STEPS)
        finished = threading.Event()
        answer = []

        def wait_for_the_writer():
            answer.append(process.reply())
            finished.set()

        waiting = threading.Thread(target=wait_for_the_writer)
        waiting.start()
        seen = [0]
        while True:
            # Asked before the snap, so that the last snap comes after the writer's last flush.
            last = finished.is_set()
            if f.snap():
                rows = len(table)
                assert rows % ROWS_PER_STEP == 0 and rows >= seen[-1], (rows, seen[-1])
                check_rows(table, array, rows)
                seen.append(rows)
            if last:
                break
        waiting.join()
        assert answer == ["ran %d" % FREE_RUNNING_STEPS]
        assert seen[-1] == FREE_RUNNING_STEPS * ROWS_PER_STEP
        print("%d views of the file while the writer ran" % (len(seen) - 1))
