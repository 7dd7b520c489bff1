"""Files the example programs write, read from Python: the values are those the programs'
sources compute (examples/results_file.cpp, examples/beam_*.cpp), not those of a run."""

import numpy as np
import pytest

import zqaromcore

# examples/results_file.cpp: a beam of CELLS hexahedra along x, SIDE by SIDE across.
CELLS = 8
SIDE = 2
STEPS = 4
TIP_DEFLECTION = -0.02


def node_id(i, j, k):
    return 1 + i + (CELLS + 1) * (j + (SIDE + 1) * k)


def beam_nodes():
    """(id, x, y, z) in the order the program writes them."""
    return [(node_id(i, j, k), float(i), float(j), float(k))
            for k in range(SIDE + 1) for j in range(SIDE + 1) for i in range(CELLS + 1)]


def hexahedra():
    return [[node_id(i, j, k), node_id(i + 1, j, k), node_id(i + 1, j + 1, k), node_id(i, j + 1, k),
             node_id(i, j, k + 1), node_id(i + 1, j, k + 1), node_id(i + 1, j + 1, k + 1), node_id(i, j + 1, k + 1)]
            for k in range(SIDE) for j in range(SIDE) for i in range(CELLS)]


def quadrilaterals():
    return [[node_id(CELLS, j, k), node_id(CELLS, j + 1, k), node_id(CELLS, j + 1, k + 1), node_id(CELLS, j, k + 1)]
            for k in range(SIDE) for j in range(SIDE)]


def displacements(step):
    """The step's (ux, uy, uz) per node, computed as the program computes them, and the largest -uz."""
    load = step / STEPS
    rows = []
    largest = 0.0
    for _, x, _, z in beam_nodes():
        xi = x / CELLS
        uz = load * TIP_DEFLECTION * xi * xi * (3 - xi) / 2
        rows.append([-uz * (z - SIDE / 2.0) * 0.1, 0.0, uz])
        largest = max(largest, -uz)
    return np.array(rows), largest


@pytest.fixture(scope="module")
def results(programs, tmp_path_factory):
    path = tmp_path_factory.mktemp("results") / "beam.zdb"
    programs.run(programs.results_file, path)
    with zqaromcore.open(path) as f:
        yield f


def test_results_file_nodes_and_steps_read_as_the_program_computed_them(results):
    assert results.kind == "plain" and results.read_only
    assert results.description == "Cantilever beam, 4 load steps"
    nodes = results.table("Nodes").read()
    expected = np.array(beam_nodes())
    assert not any(np.ma.getmaskarray(values).any() for values in nodes.values())
    np.testing.assert_array_equal(nodes["id"], expected[:, 0].astype(np.int32))
    for axis, column in (("x", 1), ("y", 2), ("z", 3)):
        np.testing.assert_array_equal(nodes[axis], expected[:, column])

    steps = results.table("Steps").read()
    assert steps["step"].tolist() == list(range(1, STEPS + 1))
    assert steps["time"].tolist() == [s / STEPS for s in range(1, STEPS + 1)]
    tip = [row for row, (_, x, _, _) in enumerate(beam_nodes()) if x == CELLS]
    arrays = set()
    for step, handle, largest in zip(steps["step"], steps["displacements"], steps["max |u|"]):
        array = results.array(handle)
        assert (array.type, array.fields, len(array)) == ("double", 3, len(expected))
        values = array.read()
        computed, computed_largest = displacements(step)
        np.testing.assert_array_equal(values, computed)
        assert largest == computed_largest
        assert values[tip, 2] == pytest.approx(TIP_DEFLECTION * step / STEPS, rel=1e-12)
        arrays.add(int(handle))
    assert len(arrays) == STEPS


def test_results_file_elements_name_their_connectivity_rows(results):
    elements = results.table("Elements").read()
    kinds = {"hex8": hexahedra(), "quad4": quadrilaterals()}
    assert elements["type"].tolist() == ["hex8"] * len(kinds["hex8"]) + ["quad4"] * len(kinds["quad4"])
    assert elements["id"].tolist() == list(range(1, len(elements["id"]) + 1))
    handles = {}
    for kind, handle, row in zip(elements["type"], elements["connectivity"], elements["row"]):
        handles.setdefault(kind, set()).add(int(handle))
        array = results.array(handle)
        assert array.type == "int" and array.fields == len(kinds[kind][0])
        assert array.read(row, row + 1).tolist() == [kinds[kind][row]]
    # One array per element type, each holding its elements' rows in order.
    assert all(len(found) == 1 for found in handles.values())
    for kind, found in handles.items():
        assert results.array(found.pop()).read().tolist() == kinds[kind]


def test_results_file_stream_holds_the_run_information(results):
    streams = [info.handle for info in results.objects() if info.kind == "stream"]
    assert len(streams) == 1
    items = results.stream(streams[0]).items()
    assert items == [(1, "results_file example"), (2, 1), (3, "static, linear elastic"), (4, STEPS),
                     (5, 210e9), (6, np.float32(0.3))]
    assert [type(value) for _, value in items] == [str, int, str, int, float, np.float32]


# examples/beam_build.cpp: stations 0..LENGTH along the beam, SECTION corners at each.
LENGTH = 8
SECTION = 4


def station_node(station, corner):
    return SECTION * station + corner + 1


@pytest.fixture(scope="module")
def model(programs, tmp_path_factory):
    path = tmp_path_factory.mktemp("model") / "beam.mdb"
    programs.run(programs.model_file, "write", path)
    return path


def zdb_classes(programs, path):
    """zdb classes' lines as (name, id, version, base, table, rows), version and base as printed."""
    lines = programs.run(programs.zdb, "classes", path).splitlines()
    assert lines[0].split() == ["class", "id", "name", "version", "base", "class", "table", "rows"]
    rows = []
    for line in lines[1:]:
        class_id, name, version, base, table, count = line.split()
        rows.append((name, int(class_id, 16), version, base, int(table), int(count)))
    return rows


def test_model_classes_agree_with_zdb(programs, model):
    with zqaromcore.open(model) as f:
        classes = f.classes()
    names = {entry.id: entry.name for entry in classes}
    # zdb names a base class the catalogue holds, and shows "-" for none (class id 1, no class).
    ours = [(entry.name, entry.id, "-" if entry.version < 0 else str(entry.version), names.get(entry.base, "-"),
             int(entry.table), entry.rows) for entry in classes]
    assert ours == zdb_classes(programs, model)
    by_name = {entry.name: entry for entry in classes}
    # Every node, element and step of the beam, one Node row more: the second copy of the tip node.
    assert {name: by_name[name].rows for name in ("Model", "Material", "Node", "Hex8", "Quad4", "Element", "Step",
                                                  "StepResults", "NodeSet", "ElementSet")} == {
        "Model": 1, "Material": 2, "Node": (LENGTH + 1) * SECTION + 1, "Hex8": LENGTH, "Quad4": LENGTH,
        "Element": 2 * LENGTH, "Step": 3, "StepResults": 2, "NodeSet": 4, "ElementSet": 3}
    assert by_name["Hex8"].base == by_name["Quad4"].base == by_name["Element"].id
    assert by_name["Node"].id == 0x01000002 and by_name["Model"].id == 0x01000008


def test_model_references_name_existing_rows_of_their_class(model):
    with zqaromcore.open(model) as f:
        rows = {entry.name: entry.rows for entry in f.classes()}
        nulls = 0
        for name in rows:
            for member, values in f.read_class(name).items():
                if values.dtype != object or not any(isinstance(value, tuple) for value in values):
                    continue
                for value in values:
                    if value is None:
                        nulls += 1
                        continue
                    target, oid = value
                    assert target in rows and 0 <= oid < rows[target], (name, member, value)
        # Seven shells without an offset node and the step that has not run.
        assert nulls == LENGTH - 1 + 1


def test_model_values_follow_the_beam_the_program_builds(model):
    with zqaromcore.open(model) as f:
        nodes = f.read_class("Node")
        expected = [(station_node(station, corner), station, corner % 2, corner // 2)
                    for station in range(LENGTH + 1) for corner in range(SECTION)]
        expected.append(expected[-1])
        assert list(zip(*(nodes[member].tolist() for member in ("Id", "X", "Y", "Z")))) == expected

        materials = f.read_class("Material")
        assert materials["Name"].tolist() == ["Steel", "Aluminium"]
        assert materials["Young"].tolist() == [210e9, 70e9] and materials["Poisson"].tolist() == [0.3, 0.33]
        # The aluminium's further parameters: a map row naming a table of keys and values.
        maps = f.read_class("##InternalMap")
        map_class, map_row = materials["Parameters"][1]
        assert map_class == "##InternalMap"
        parameters = f.table(maps["Target#Handle"][map_row]).read()
        assert dict(zip(parameters["Key"].tolist(), parameters["Data"].tolist())) == {
            "density": 2700, "yield": 95e6, "ultimate": 110e6}

        # Solids of steel first, then the shells of aluminium, each node list one row of its corners.
        elements = f.read_class("Element")
        assert elements["Id"].tolist() == list(range(1, 2 * LENGTH + 1))
        assert elements["Formulation"].tolist() == ["full"] * LENGTH + ["reduced"] * LENGTH
        assert elements["Material"].tolist() == [("Material", 0)] * LENGTH + [("Material", 1)] * LENGTH
        assert f.read_class("Hex8")["##BaseClassOID"].tolist() == list(range(LENGTH))
        assert f.read_class("Quad4")["##BaseClassOID"].tolist() == list(range(LENGTH, 2 * LENGTH))
        lists = f.read_class("##InternalList")
        for e, (list_class, list_row) in enumerate(elements["Nodes"]):
            assert list_class == "##InternalList"
            station, solid = e % LENGTH, e < LENGTH
            corners = ([station_node(station, c) for c in (0, 1, 3, 2)] +
                       [station_node(station + 1, c) for c in (0, 1, 3, 2)] if solid else
                       [station_node(station, 2), station_node(station, 3), station_node(station + 1, 3),
                        station_node(station + 1, 2)])
            # A list stores its values one to an array row; Target#Columns makes its logical rows.
            columns = lists["Target#Columns"][list_row]
            assert columns == len(corners)
            assert f.array(lists["Target#Handle"][list_row]).read().reshape(-1, columns).tolist() == [corners]

        # Only the tip's shell is offset, to the tip's first node.
        offsets = f.read_class("Quad4")["Offset"].tolist()
        assert offsets[:-1] == [None] * (LENGTH - 1)
        assert offsets[-1][0] == "Node" and nodes["Id"][offsets[-1][1]] == station_node(LENGTH, 0)

        # The last step has not run: no results.
        steps = f.read_class("Step")
        results = f.read_class("StepResults")
        assert steps["Name"].tolist() == ["Settle", "Bend", "Release"]
        assert steps["Results"].tolist() == [("StepResults", 0), ("StepResults", 1), None]
        assert results["Time"].tolist() == [1.0, 2.0]

