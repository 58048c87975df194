# The README's two commands are `make run` and `make test`. Each installs what is missing,
# configures, builds incrementally and runs.
BUILD      ?= build
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?=
LAUNCHER   := $(shell command -v ccache >/dev/null 2>&1 && echo -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
# Paths under the checkout reach ccache relative to it, so another clone of the same sources
# (a CI run, a second work tree) reuses the compiled objects.
export CCACHE_BASEDIR ?= $(CURDIR)
CONFIGURE  = cmake -S . -G Ninja -DCMAKE_EXPORT_COMPILE_COMMANDS=ON $(LAUNCHER) $(CMAKE_ARGS)
SHOTS      ?= $(CURDIR)/$(BUILD)/screenshots

.PHONY: all deps build run test test-asan fuzz bench format clean package

all: build

deps:
	@tools/ensure-deps.sh build

$(BUILD)/build.ninja: CMakeLists.txt
	@tools/ensure-deps.sh build test
	$(CONFIGURE) -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_COMPILE_WARNING_AS_ERROR=ON

build: $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

# The operator window. Without a display it renders offscreen to PNG files and prints where.
run: build
	@if [ -n "$$DISPLAY$$WAYLAND_DISPLAY" ]; then \
		$(BUILD)/src/apps/monitor/olvex-monitor $(ARGS); \
	else \
		QT_QPA_PLATFORM=offscreen $(BUILD)/src/apps/monitor/olvex-monitor --screenshot $(SHOTS) $(ARGS); \
	fi

# Every test, PostgreSQL ones included: a private throwaway cluster in the build tree serves
# them (tools/with-test-postgres.sh; an OLVEX_TEST_PG already set is used instead).
# CTEST_ARGS="-LE package" leaves out the install, example and package tests.
test: build
	@tools/ensure-deps.sh test
	QT_QPA_PLATFORM=offscreen tools/with-test-postgres.sh $(BUILD) \
		ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS) $(CTEST_ARGS)

# Debian packages of the build: libraries, development files, Designer plugin, programs.
package: build
	@tools/ensure-deps.sh package
	cd $(BUILD) && cpack -G DEB

test-asan:
	@tools/ensure-deps.sh build test
	@[ -f build-asan/build.ninja ] || $(CONFIGURE) -B build-asan -DCMAKE_BUILD_TYPE=Debug -DOLVEX_SANITIZE=ON
	cmake --build build-asan -j $(JOBS)
	cd build-asan && QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=0 \
		UBSAN_OPTIONS=print_stacktrace=1 ../tools/with-test-postgres.sh . \
		ctest --output-on-failure -j $(JOBS) $(CTEST_ARGS)

# Each libFuzzer target runs for FUZZ_SECONDS (60 by default); a finding stops with its input.
FUZZ_SECONDS ?= 60
fuzz:
	@tools/ensure-deps.sh build fuzz
	@[ -f build-fuzz/build.ninja ] || CC=clang CXX=clang++ $(CONFIGURE) -B build-fuzz \
		-DCMAKE_BUILD_TYPE=RelWithDebInfo -DOLVEX_FUZZ=ON -DOLVEX_TESTS=OFF
	cmake --build build-fuzz -j $(JOBS) --target $$(cat build-fuzz/fuzzers.txt)
	@set -e; for f in $$(cat build-fuzz/fuzzers.txt); do \
		echo "== $$f ($(FUZZ_SECONDS) s)"; \
		mkdir -p build-fuzz/corpus/$$f; \
		corpus="build-fuzz/corpus/$$f"; \
		[ -d fuzz/corpus/$$f ] && corpus="$$corpus fuzz/corpus/$$f"; \
		ASAN_OPTIONS=detect_leaks=1 build-fuzz/fuzz/$$f -max_total_time=$(FUZZ_SECONDS) \
			-artifact_prefix=build-fuzz/ -print_final_stats=1 $$corpus 2>&1 | tail -n 12; \
	done

# Google Benchmark programs; prints "ratio NAME VALUE" lines (candidate against its baseline
# measured in the same run).
bench:
	@tools/ensure-deps.sh build bench
	@[ -f build-bench/build.ninja ] || $(CONFIGURE) -B build-bench -DCMAKE_BUILD_TYPE=Release \
		-DOLVEX_BENCH=ON -DOLVEX_TESTS=OFF
	cmake --build build-bench -j $(JOBS)
	@bench/run.sh build-bench

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) build-asan build-fuzz build-bench
