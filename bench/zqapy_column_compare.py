"""The Python side of zqapy_ColumnCompare: reads one double field of a table
whole, through Table.column (rows without data read as NaN) and then through
Table.read, timing each call alone, and prints for each "<measure> <seconds>
<sum> <sum of every STRIDE-th value> <rows without data>" for the C++ side
to check, the values of rows without data counted as 0.

    zqapy_column_compare.py FILE TABLE_HANDLE FIELD STRIDE
"""

import sys
import time

import numpy as np

import zqaromcore


def report(measure, seconds, values, absent, stride):
    """values hold 0 where absent (a bool array) is True."""
    print(measure, repr(seconds), repr(float(values.sum())), repr(float(values[::stride].sum())),
          int(np.count_nonzero(absent)))


def main():
    path, handle, field, stride = sys.argv[1], int(sys.argv[2]), sys.argv[3], int(sys.argv[4])
    with zqaromcore.open(path) as results:
        table = results.table(handle)

        start = time.perf_counter()
        column = table.column(field, fill=np.nan)
        seconds = time.perf_counter() - start
        absent = np.isnan(column)
        report("column", seconds, np.where(absent, 0.0, column), absent, stride)

        start = time.perf_counter()
        masked = table.read([field])[field]
        seconds = time.perf_counter() - start
        report("masked", seconds, masked.filled(0.0), np.ma.getmaskarray(masked), stride)


if __name__ == "__main__":
    main()
