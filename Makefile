# Thin wrapper over CMake; every target installs what it needs first.
BUILD ?= build
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local

.PHONY: deps configure build run test bench fuzz clean install package

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

run: build
	cd $(BUILD)/game && ./quorval

test: build
	cd $(BUILD) && SDL_VIDEODRIVER=offscreen SDL_AUDIODRIVER=dummy ctest --output-on-failure -j $(JOBS)

bench: build
	cd $(BUILD) && SDL_VIDEODRIVER=offscreen SDL_AUDIODRIVER=dummy ./bench/quorval_bench --benchmark_counters_tabular=true

# Coverage-guided fuzzing needs clang; each target runs FUZZ_SECONDS.
FUZZ_SECONDS ?= 60
fuzz:
	@bash scripts/install-deps.sh fuzz
	@cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DQUORVAL_FUZZ=ON >/dev/null
	@cmake --build build-fuzz -j $(JOBS) --target fuzz_targets
	@for f in build-fuzz/fuzz/fuzz_*; do echo "== $$f"; $$f -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 2>&1 | grep -E 'stat::number_of_executed_units|ERROR|SUMMARY' ; done

# The game under $(PREFIX) (bin/, share/); DESTDIR= stages it in another root.
install: configure
	@cmake --build $(BUILD) -j $(JOBS) --target installable
	DESTDIR="$(DESTDIR)" cmake --install $(BUILD) --prefix "$(PREFIX)" --strip

# The Debian package, written by CPack into $(BUILD)/.
package: configure
	@cmake --build $(BUILD) -j $(JOBS) --target installable
	cd $(BUILD) && cpack -G DEB

clean:
	rm -rf $(BUILD) build-fuzz
