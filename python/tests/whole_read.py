"""Reading a whole file through the package, in this process or in a child.

contents(f) is everything an open file holds, in plain Python values that
compare exactly (floats as their hexadecimal form, so that -0.0 and NaN
compare too). Run as a program, it reads each file named on its command line
and prints one JSON line per file, as soon as that file is done:

    {"path": ..., "outcome": "read"}
    {"path": ..., "outcome": "error", "type": ..., "message": ..., "filename": ...}

so that a parent can tell a library error from a crash (a child that ends
without printing the line of the file it was reading) and know which file
caused it.
"""

import json
import os
import signal
import subprocess
import sys

import numpy as np

import zqaromcore


def _value(value):
    if isinstance(value, (float, np.floating)):
        return float(value).hex()
    if isinstance(value, np.integer):
        return int(value)
    return value


def _column(values):
    """A (masked) column as a list, None where the row's field holds no data."""
    mask = np.ma.getmaskarray(values)
    return [None if absent else _value(value) for value, absent in zip(np.ma.getdata(values).tolist(), mask)]


def contents(f):
    """Every object of the open file f, read whole: {handle: description}."""
    objects = {}
    for info in f.objects():
        if info.kind == "table":
            table = f.table(info.handle)
            columns = table.read()
            objects[int(info.handle)] = ("table", table.name, table.fields,
                                         {name: _column(values) for name, values in columns.items()})
        elif info.kind == "stream":
            objects[int(info.handle)] = ("stream", [(tag, type(value).__name__, _value(value))
                                                   for tag, value in f.stream(info.handle).items()])
        elif info.kind.endswith(" array"):
            array = f.array(info.handle)
            objects[int(info.handle)] = ("array", array.type, array.fields,
                                         [[_value(value) for value in row] for row in array.read().tolist()])
        else:
            objects[int(info.handle)] = (info.kind, info.size)
    return objects


def read_file(path):
    """Opens path, reads it whole and also asks for its classes; the contents."""
    with zqaromcore.open(path) as f:
        f.classes()
        return contents(f)


def outcome(path):
    """What reading path whole gave, as the JSON line's dict."""
    try:
        read_file(path)
    except Exception as error:  # every kind is reported, for the parent to judge
        return {"path": path, "outcome": "error", "type": "%s.%s" % (type(error).__module__, type(error).__qualname__),
                "message": str(error), "filename": getattr(error, "filename", None)}
    return {"path": path, "outcome": "read"}


def read_in_children(paths, timeout):
    """outcome(path) for each of paths, read in child processes: one child reads files until it ends
    early, when the file it was reading gets {"outcome": "crash", "status": ..., "stderr": ...} (the
    signal's name, the exit status, or "hung" when timeout seconds ran out) and a new child takes the
    files after it."""
    outcomes = []
    remaining = list(paths)
    while remaining:
        child = subprocess.Popen([sys.executable, os.path.abspath(__file__)] + remaining, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, text=True, errors="replace")
        try:
            out, err = child.communicate(timeout=timeout)
            status = child.returncode
        except subprocess.TimeoutExpired:
            child.kill()
            out, err = child.communicate()
            status = "hung"
        done = [json.loads(line) for line in out.splitlines()]
        outcomes.extend(done)
        remaining = remaining[len(done):]
        if status == 0 and not remaining:
            break
        if not remaining:
            # Every file was read, and the child failed while it ended.
            remaining = [None]
        name = signal.Signals(-status).name if isinstance(status, int) and status < 0 else status
        outcomes.append({"path": remaining[0], "outcome": "crash", "status": name, "stderr": err[-2000:]})
        remaining = remaining[1:]
    return outcomes


def main(paths):
    for path in paths:
        print(json.dumps(outcome(path)), flush=True)


if __name__ == "__main__":
    main(sys.argv[1:])
