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

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS) --timeout 300

bench: configure
	@cmake --build $(BUILD) -j $(JOBS) --target zel_benchmarks
	@scripts/run-benchmarks $(BUILD)

run: build
	@scripts/run-demo $(BUILD)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) build-asan
