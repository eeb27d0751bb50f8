# make run   set-up, build, and the main job on the bundled demo
# make test  set-up, build, and every test
# make bench set-up, build, and the benchmarks
# make fuzz  set-up, build the fuzz targets with clang, run each for FUZZ_TIME seconds

BUILD      ?= build
BUILD_TYPE ?= RelWithDebInfo
CMAKE_ARGS ?=
JOBS       ?= $(shell nproc)

.PHONY: all setup configure build test bench fuzz run format clean

all: build

setup:
	@scripts/setup-deps

configure: setup
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_ARGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# Guile and its collector keep memory for the life of the process by design: the leak
# checker is told so, and stays on for everything else. Freed memory is filled, so that a
# use after free inside the standard library, which the sanitizer does not instrument (a
# map walked on over an erased node), fails at once instead of reading stale pointers.
TEST_ENV = QT_QPA_PLATFORM=offscreen \
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:max_free_fill_size=4096 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp:print_suppressions=0 \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

test: build
	@cd $(BUILD) && $(TEST_ENV) ctest --output-on-failure -j $(JOBS) --timeout 300

bench: configure
	@cmake --build $(BUILD) -j $(JOBS) --target zel_benchmarks
	@scripts/run-benchmarks $(BUILD)

# The fuzz targets live in a tree of their own, built by clang with libFuzzer and the
# sanitizers; each runs FUZZ_TIME seconds on its corpus (tests/fuzz/corpus/<target>).
FUZZ_BUILD ?= build-fuzz
FUZZ_TIME  ?= 60
fuzz: setup
	@cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZEL_FUZZ=ON \
		-DZEL_BUILD_BENCH=OFF -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ >/dev/null
	@cmake --build $(FUZZ_BUILD) -j $(JOBS) --target zel_fuzzers
	@scripts/run-fuzzers $(FUZZ_BUILD) $(FUZZ_TIME)

run: build
	@scripts/run-demo $(BUILD)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) build-asan $(FUZZ_BUILD)
