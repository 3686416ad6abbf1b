# Thin wrapper over CMake: `make demo` and `make test` do all set-up on a fresh machine.
BUILD ?= build
ASAN_BUILD ?= build-asan
JOBS ?= $(shell nproc)
CUDA ?= AUTO
CMAKE_FLAGS ?=

.PHONY: all configure build demo test test-sanitize bench bench-peer accuracy clean

all: build

configure:
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEXARO_CUDA=$(CUDA) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD) -j $(JOBS)

demo: build
	./$(BUILD)/apps/vexaro/vexaro demo --out vexaro-demo

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# Host-only build with AddressSanitizer and UndefinedBehaviorSanitizer, running the same tests.
test-sanitize:
	cmake -S . -B $(ASAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEXARO_CUDA=OFF \
	      -DVEXARO_SANITIZE=ON -DVEXARO_BUILD_BENCH=OFF
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
	    ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD)/bench/bench_*; do echo "== $$b"; $$b; done

# The whole pipeline against the cloth simulation filter on the same generated files, 1 M to 10 M
# points (bench/peer_ratio.sh; BENCH_POINTS="N ..." for other sizes). Installs the peer into a
# virtual environment of the build folder on first use.
BENCH_POINTS ?= 1000000 4000000 10000000
bench-peer: build
	bench/peer_ratio.sh $(BUILD) $(BENCH_POINTS)

# Classifies the shared sample files and synthetic scenes and prints the accuracy table
# (tools/accuracy.sh; VEXARO_ACCURACY_POINTS=N for larger scenes).
accuracy: build
	tools/accuracy.sh $(BUILD)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD)
