#!/usr/bin/python3
"""How far the tip of the demo's cantilever beam moves, load step by load step.

Reads the results file that `make demo` writes (examples/results_file.cpp):
the beam's nodes in the table "Nodes", and a row per load step in the table
"Steps" whose field "displacements" names a double array of the nodes'
displacements: one row (ux, uy, uz) per node, in the order of the Nodes
table. The tip is the middle node of the free end: of the nodes at the
largest x, the one nearest the centre of that end face.

With Matplotlib, plots the tip's uz over the load factor (the steps' "time")
into a PNG; without it, or with --table, prints a small table instead.

    PYTHONPATH=build/python /usr/bin/python3 examples/plot_tip_displacement.py [RESULTS] [--png FILE] [--table]
"""

import argparse
import os
import sys

import numpy as np

import zqaromcore

try:
    import matplotlib
except ImportError:
    matplotlib = None

# Where `make demo` writes it, from the folder of this script.
DEFAULT_RESULTS = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "build", "demo",
                                                "beam.zdb"))


def tip_node(nodes):
    """The row of the tip node in the Nodes table."""
    x, y, z = nodes.column("x"), nodes.column("y"), nodes.column("z")
    end = np.flatnonzero(x == x.max())
    off_centre = (y[end] - y[end].mean()) ** 2 + (z[end] - z[end].mean()) ** 2
    return end[np.argmin(off_centre)]


def read_tip(path):
    """The tip node's id and position, and per load step its number, load factor and uz."""
    with zqaromcore.open(path) as results:
        nodes = results.table("Nodes")
        tip = tip_node(nodes)
        node = {name: nodes.column(name, start=tip, stop=tip + 1)[0] for name in ("id", "x", "y", "z")}
        steps = results.table("Steps")
        uz = [results.array(handle).read(start=tip, stop=tip + 1)[0, 2] for handle in steps.column("displacements")]
        return node, steps.column("step"), steps.column("time"), np.array(uz)


def plot(png, node, loads, uz):
    matplotlib.use("Agg")  # draws into files only: no display needed
    from matplotlib import pyplot

    figure, axes = pyplot.subplots()
    axes.plot(loads, uz, marker="o")
    axes.set_xlabel("load factor")
    axes.set_ylabel("uz of the tip (node %d)" % node["id"])
    axes.set_title("Cantilever beam: tip displacement")
    axes.grid(True)
    figure.savefig(png)
    pyplot.close(figure)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("results", nargs="?", default=DEFAULT_RESULTS, help="the results file (default: the demo's)")
    parser.add_argument("--png", help="the plot's file (default: beside the results file, ending -tip.png)")
    parser.add_argument("--table", action="store_true", help="print the table even when Matplotlib is there")
    args = parser.parse_args()

    try:
        node, steps, loads, uz = read_tip(args.results)
    except zqaromcore.Error as error:
        sys.exit("plot_tip_displacement: %s" % error)
    except KeyError as error:  # a file without the demo's tables
        sys.exit("plot_tip_displacement: %s" % error.args[0])
    print("%s: tip node %d at (%g, %g, %g), %d load steps"
          % (args.results, node["id"], node["x"], node["y"], node["z"], len(steps)))

    if matplotlib is not None and not args.table:
        png = args.png or os.path.splitext(args.results)[0] + "-tip.png"
        plot(png, node, loads, uz)
        print("plotted the tip's uz over the load factor into %s" % png)
        return
    print("%4s %6s %12s" % ("step", "load", "tip uz"))
    for step, load, value in zip(steps, loads, uz):
        print("%4d %6.3f %12.6f" % (step, load, value))


if __name__ == "__main__":
    main()
