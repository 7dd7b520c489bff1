"""What the package's tests share: the programs built beside the package.

CTest runs the tests with the build's paths in the environment (see
python/CMakeLists.txt); each test keeps its files in pytest's tmp_path.
"""

import os
import subprocess

import pytest


def _from_environment(name):
    value = os.environ.get(name)
    if not value:
        pytest.skip("%s is not set: run the tests through ctest" % name)
    return value


class Programs:
    """The build's programs, and a way to run one and check that it succeeded."""

    def __init__(self):
        self.zdb = _from_environment("ZQA_ZDB")
        self.results_file = _from_environment("ZQA_RESULTS_FILE")
        self.model_file = _from_environment("ZQA_MODEL_FILE")
        self.assistant_directory = _from_environment("ZQA_ASSISTANT_DIRECTORY")
        self.test_programs = _from_environment("ZQA_TEST_PROGRAMS")

    def test_program(self, name):
        """The path of one of the tests' own C++ programs (python/tests/*.cpp)."""
        return os.path.join(self.test_programs, name)

    def run(self, *command, cwd=None, env=None):
        """Runs command to its end; fails the test, showing its output, unless it exits with 0."""
        # Output names files as their bytes spell them, which need not be UTF-8.
        done = subprocess.run([str(word) for word in command], cwd=cwd, env=env, capture_output=True, text=True,
                              errors="surrogateescape")
        assert done.returncode == 0, "%s exited with %d\n%s%s" % (command, done.returncode, done.stdout, done.stderr)
        return done.stdout


@pytest.fixture(scope="session")
def programs():
    return Programs()
