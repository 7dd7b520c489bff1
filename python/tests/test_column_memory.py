"""Plain column reads of many rows, in a child process: a read that wrote past one of its arrays
would corrupt the heap, and the child would end by a signal (or the sanitizers' report) rather than
with its values."""

import json
import subprocess
import sys

import numpy as np

import zqaromcore

ROWS = 20000

READ_COLUMNS = """
import json
import sys
import zqaromcore
with zqaromcore.open(sys.argv[1]) as f:
    table = f.table("Samples")
    for _ in range(3):
        values, counts = table.column("value"), table.column("count", fill=-1)
    tail = table.column("count", start=-4, fill=-7)
print(json.dumps([float(values.sum()), int(counts.sum()), int((counts == -1).sum()), tail.tolist()]))
"""


def test_plain_columns_of_many_rows_read_values_and_fill_and_the_reader_ends_cleanly(tmp_path):
    path = tmp_path / "many.zdb"
    index = np.arange(ROWS)
    absent = index % 3 == 0
    with zqaromcore.open(path, "w") as f:
        f.create_table("Samples", {"value": index * 0.5,
                                   "count": np.ma.MaskedArray(index.astype(np.int32), mask=absent)})
    done = subprocess.run([sys.executable, "-c", READ_COLUMNS, str(path)], capture_output=True, text=True)
    assert done.returncode == 0, (done.returncode, done.stderr[-3000:])
    expected = [float((index * 0.5).sum()), int(index[~absent].sum()) - int(absent.sum()), int(absent.sum()),
                [-7 if absent[row] else int(row) for row in index[-4:]]]
    assert json.loads(done.stdout) == expected
