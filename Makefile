# Quick start: `make demo` builds everything, writes the example results
# file and looks at it with zdb; `make test` builds and runs every test.
# `make test ASAN=ON` does the same under the address and undefined-behaviour
# sanitizers, in a build folder of its own. `make fuzz` builds the fuzz
# targets with clang in build-fuzz/ and runs each for FUZZ_SECONDS seconds.

ASAN ?= OFF
# Segments go through libdeflate in the plain build and through zlib alone
# under the sanitizers, so that a run of both tests both.
LIBDEFLATE ?= $(if $(filter ON,$(ASAN)),OFF,ON)
BUILD ?= $(if $(filter ON,$(ASAN)),build-asan,build)
JOBS ?= $(shell nproc)
PREFIX ?= $(CURDIR)/out/install
FUZZ_SECONDS ?= 180
FUZZ_TARGETS ?= rfm_FuzzPlainDatabase rfm_FuzzCompressedDatabase rfm_FuzzTaggedStream zdb_FuzzCheckAgrees \
  rom_FuzzTransporterFile

.PHONY: all demo test deps configure build bench fuzz install clean

all: build

deps:
	@bash .ci/deps

configure: deps
	cmake -S . -B $(BUILD) -DASAN=$(ASAN) -DZQA_LIBDEFLATE=$(LIBDEFLATE) -DBUILD_TESTING=ON

build: configure
	cmake --build $(BUILD) -j $(JOBS)

demo: build
	bash examples/demo.sh $(BUILD)

test: build
	ctest --test-dir $(BUILD) -j $(JOBS) --output-on-failure

bench:
	@bash .ci/deps bench
	cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DZQA_LIBDEFLATE=$(LIBDEFLATE) -DBUILD_TESTING=OFF -DBUILD_BENCHMARKS=ON
	cmake --build build-bench -j $(JOBS)

fuzz:
	cmake -S . -B build-fuzz -DCMAKE_CXX_COMPILER=clang++ -DBUILD_FUZZERS=ON -DBUILD_TESTING=OFF
	cmake --build build-fuzz -j $(JOBS) --target rfm_FuzzSeeds $(FUZZ_TARGETS)
	fuzz/run build-fuzz $(FUZZ_SECONDS) $(FUZZ_TARGETS)

install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

clean:
	rm -rf build build-asan build-bench build-fuzz out
