"""Files named by a "zbxrdb://localhost/..." URL, read through the file assistant that the build
puts first on PATH: the same values as the local path gives, and no way to write."""

import os

import pytest

import zqaromcore
from whole_read import contents


@pytest.fixture
def assistant_on_path(programs, monkeypatch):
    monkeypatch.setenv("PATH", programs.assistant_directory + os.pathsep + os.environ.get("PATH", ""))


def url_of(path):
    return "zbxrdb://localhost/" + str(path.resolve())


@pytest.fixture(scope="module")
def beam_files(programs, tmp_path_factory):
    """The example's results file, plain and compressed by zdb."""
    folder = tmp_path_factory.mktemp("remote")
    plain, compressed = folder / "beam.zdb", folder / "beam-compressed.zdb"
    programs.run(programs.results_file, plain)
    programs.run(programs.zdb, "compress", plain, compressed)
    return {"plain": plain, "compressed": compressed}


def test_a_url_reads_what_the_local_path_reads(assistant_on_path, beam_files):
    path = beam_files["plain"]
    with zqaromcore.open(path) as local:
        expected = contents(local)
        description = local.description
    with zqaromcore.open(url_of(path)) as remote:
        assert (remote.kind, remote.name, remote.read_only) == ("remote", url_of(path), True)
        assert remote.description == description
        assert contents(remote) == expected
        # Parts of a table, read through the URL too.
        assert remote.table("Nodes").column("x", start=-9).tolist() == [float(i) for i in range(9)]


def test_a_compressed_file_named_by_a_url_is_refused_by_name(assistant_on_path, beam_files):
    # The library reads a URL's bytes as they are stored and decodes compressed containers only
    # on local paths: the container is not a database, and the error says which file it is.
    path = beam_files["compressed"]
    with zqaromcore.open(path) as local:
        assert local.kind == "compressed"
    with pytest.raises(zqaromcore.Error) as raised:
        zqaromcore.open(url_of(path))
    assert raised.value.filename == url_of(path)
    assert '"%s"  is not an Zorbex database file' % url_of(path) in str(raised.value)


def test_a_url_refuses_every_writing_mode_and_leaves_the_file_alone(assistant_on_path, beam_files, tmp_path):
    path = beam_files["plain"]
    before = path.read_bytes()
    for mode in ("r+", "a", "w", "x"):
        with pytest.raises(ValueError, match="%s: a file named by a URL is read only" % url_of(path)):
            zqaromcore.open(url_of(path), mode)
    assert path.read_bytes() == before
    missing = tmp_path / "not-there.zdb"
    for mode in ("w", "x"):
        with pytest.raises(ValueError, match="read only"):
            zqaromcore.open(url_of(missing), mode)
    assert not missing.exists()


def test_a_url_of_a_missing_file_raises_an_error_naming_it(assistant_on_path, tmp_path):
    url = url_of(tmp_path / "not-there.zdb")
    with pytest.raises(zqaromcore.Error) as raised:
        zqaromcore.open(url)
    assert raised.value.filename == url
    assert url in str(raised.value)
