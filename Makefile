# make run   set-up, build, and the main job on the bundled demo
# make test  set-up, build, and every test
# make bench set-up, build, and the benchmarks

BUILD      ?= build
BUILD_TYPE ?= RelWithDebInfo
CMAKE_ARGS ?=
JOBS       ?= $(shell nproc)

.PHONY: all setup configure build test bench run format clean

all: build

setup:
	@scripts/setup-deps

configure: setup
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_ARGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# Guile and its collector keep memory for the life of the process by design: the leak
# checker is told so, and stays on for everything else.
TEST_ENV = QT_QPA_PLATFORM=offscreen \
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp:print_suppressions=0 \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

test: build
	@cd $(BUILD) && $(TEST_ENV) ctest --output-on-failure -j $(JOBS) --timeout 300

bench: configure
	@cmake --build $(BUILD) -j $(JOBS) --target zel_benchmarks
	@scripts/run-benchmarks $(BUILD)

run: build
	@scripts/run-demo $(BUILD)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) build-asan
