# The two commands: `make demo` runs the example programs, `make test` builds
# the library for i386 and x86-64 (and x86-64 with ASan+UBSan) and runs every
# test. Both install what is missing first.

JOBS ?= 2
CMAKE ?= cmake
GEN := -G Ninja

VARIANTS := i386 x86_64 asan tsan
cfg_i386 := -DKRM_ARCH=i386 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKRM_TESTS=ON -DKRM_EXAMPLES=ON
cfg_x86_64 := -DKRM_ARCH=x86_64 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKRM_TESTS=ON -DKRM_EXAMPLES=ON
cfg_asan := -DKRM_ARCH=x86_64 -DCMAKE_BUILD_TYPE=Debug -DKRM_SANITIZE=address,undefined -DKRM_EXAMPLES=OFF
cfg_tsan := -DKRM_ARCH=x86_64 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKRM_SANITIZE=thread -DKRM_EXAMPLES=OFF
cfg_bench := -DKRM_ARCH=x86_64 -DCMAKE_BUILD_TYPE=Release -DKRM_TESTS=OFF -DKRM_BENCH=ON
cfg_bench_i386 := -DKRM_ARCH=i386 -DCMAKE_BUILD_TYPE=Release -DKRM_TESTS=OFF -DKRM_BENCH=ON
cfg_fuzz := -DKRM_ARCH=x86_64 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
            -DCMAKE_CXX_COMPILER=clang++ -DKRM_SANITIZE=address,undefined -DKRM_FUZZ=ON \
            -DKRM_TESTS=OFF -DKRM_EXAMPLES=OFF
# `make fuzz` runs each fuzz program for FUZZ_SECONDS; it is not part of `make test`.
FUZZ_DIR ?= build/fuzz
FUZZ_SECONDS ?= 60

.PHONY: all deps demo test bench bench-i386 fuzz clean

all: build-x86_64

deps:
	@./scripts/install-deps.sh

build/%/build.ninja: | deps
	$(CMAKE) -S . -B build/$* $(GEN) $(cfg_$*)

build-%: build/%/build.ninja FORCE
	$(CMAKE) --build build/$* -j $(JOBS)

# ThreadSanitizer runs the tests in which threads share units.
THREAD_TESTS := Nested|HeldUnit|ThreadedWrite|UnitWaiter
ctest_filter_tsan := -R '$(THREAD_TESTS)'

test-%: build-% FORCE
	cd build/$* && ctest --output-on-failure --no-tests=error -j $(JOBS) $(ctest_filter_$*)

test: test-i386 test-x86_64 test-asan test-tsan

demo: build-x86_64
	@./examples/run_demo.sh build/x86_64/examples

bench: build/bench/build.ninja
	$(CMAKE) --build build/bench -j $(JOBS)
	@./bench/run_benchmarks.sh build/bench

# The same benchmarks with the library built for i386.
bench-i386: build/bench_i386/build.ninja
	$(CMAKE) --build build/bench_i386 -j $(JOBS)
	@./bench/run_benchmarks.sh build/bench_i386

$(FUZZ_DIR)/build.ninja: | deps
	$(CMAKE) -S . -B $(FUZZ_DIR) $(GEN) $(cfg_fuzz)

fuzz: $(FUZZ_DIR)/build.ninja FORCE
	$(CMAKE) --build $(FUZZ_DIR) -j $(JOBS) --target fuzzers
	@./fuzz/run_fuzzers.sh $(FUZZ_DIR) $(FUZZ_SECONDS)

clean:
	rm -rf build
FORCE:
.PRECIOUS: build/%/build.ninja
