"""The Python twin of zqapy_StepWriter.cpp: the same file layout, the same rows and the same
commands on standard input, written through the package.

    /usr/bin/python3 step_writer.py FILE ROWS-PER-STEP
"""

import sys

import numpy as np

import zqaromcore

TYPES = {"step": "int", "index": "int", "value": "double", "label": "string"}
EMPTY = {"step": np.zeros(0, np.int32), "index": np.zeros(0, np.int32), "value": np.zeros(0), "label": []}


def serve(path, rows_per_step):
    with zqaromcore.open(path, "w", magic="STEP", description="Steps for a reader beside the writer") as f:
        table = f.create_table("Samples", EMPTY, types=TYPES)
        array = f.create_array(np.zeros((0, 2)), type="double")
        f.flush()
        print("ready %d %d" % (table.handle, array.handle), flush=True)
        steps = 0

        def step():
            nonlocal steps
            steps += 1
            index = np.arange(rows_per_step * (steps - 1), rows_per_step * steps)
            table.append({"step": np.full(rows_per_step, steps), "index": index, "value": index * 0.5,
                          "label": ["row %d" % row for row in index]})
            array.append(np.column_stack([index * 0.25, -index.astype(np.float64)]))
            f.flush()

        for line in sys.stdin:
            words = line.split()
            if words == ["step"]:
                step()
                print("flushed %d" % steps, flush=True)
            elif len(words) == 2 and words[0] == "run" and words[1].isdigit():
                for _ in range(int(words[1])):
                    step()
                print("ran %d" % steps, flush=True)
            else:
                print("step_writer.py: unknown command %r" % line, file=sys.stderr)
                return 2
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 3 or not sys.argv[2].isdigit() or int(sys.argv[2]) < 1:
        print("usage: step_writer.py FILE ROWS-PER-STEP (1 or more)", file=sys.stderr)
        sys.exit(2)
    sys.exit(serve(sys.argv[1], int(sys.argv[2])))
