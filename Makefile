# Makefile -- the project's front door. `make test` installs what it needs, builds everything (plain,
# sanitized and fuzz builds) and runs every test under an X server.
SHELL := /bin/bash
.SHELLFLAGS := -o pipefail -c
JOBS ?= $(shell nproc)
BUILD ?= build
ASAN_BUILD ?= build-asan
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
CMAKE_FLAGS ?=

.PHONY: all deps build asan-build fuzz-build test test-plain test-asan test-fuzz-corpus fuzz bench clean

all: build

deps:
	./scripts/install-deps.sh

build: deps
	cmake -S . -B $(BUILD) -DOSTRUM_BUILD_BENCH=ON $(CMAKE_FLAGS)
	cmake --build $(BUILD) -j $(JOBS)

asan-build: deps
	cmake -S . -B $(ASAN_BUILD) -DOSTRUM_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug $(CMAKE_FLAGS)
	cmake --build $(ASAN_BUILD) -j $(JOBS)

fuzz-build: deps
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -DOSTRUM_BUILD_FUZZ=ON -DOSTRUM_BUILD_TESTS=OFF \
	  -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS)
	cmake --build $(FUZZ_BUILD) -j $(JOBS)

test-plain: build
	./scripts/with-display.sh ctest --test-dir $(BUILD) -j $(JOBS) --output-on-failure --timeout 600 | tee $(BUILD)/ctest.log

test-asan: asan-build
	./scripts/with-display.sh ctest --test-dir $(ASAN_BUILD) -j $(JOBS) --output-on-failure --timeout 900 | tee $(ASAN_BUILD)/ctest.log

# Every fuzz target replays its seed corpus once: the corpus stays crash-free.
test-fuzz-corpus: fuzz-build
	./scripts/run-fuzzers.sh $(FUZZ_BUILD) 0

test: test-plain test-asan test-fuzz-corpus
	@./scripts/summarize-tests.sh $(BUILD)/ctest.log $(ASAN_BUILD)/ctest.log

fuzz: fuzz-build
	./scripts/run-fuzzers.sh $(FUZZ_BUILD) $(FUZZ_SECONDS)

bench: build
	./scripts/with-display.sh ./scripts/run-benchmarks.sh $(BUILD)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(FUZZ_BUILD)
