# Thin wrapper over CMake; every target installs what it needs first.
BUILD ?= build
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local

.PHONY: deps configure build run test bench soak fuzz tsan clean install package

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

# A long evening: SOAK_RACES races of SOAK_FRAMES frames (every SOAK_RENDER_EVERY-th drawn)
# in one process, watching the resident memory and the GL objects; then LeakSanitizer's
# verdict over SOAK_LSAN_RACES. Mesa's driver keeps a few bytes in its globals that become
# unreachable only when the window's GL library is unloaded: preloading keeps it loaded.
SOAK_RACES ?= 1000
SOAK_FRAMES ?= 200
SOAK_RENDER_EVERY ?= 8
SOAK_LSAN_RACES ?= 50
GL_DRIVER_LIBS = /usr/lib/x86_64-linux-gnu/libEGL.so.1:/usr/lib/x86_64-linux-gnu/libEGL_mesa.so.0:/usr/lib/x86_64-linux-gnu/dri/swrast_dri.so
soak: build
	@cmake --build $(BUILD) -j $(JOBS) --target quorval_soak quorval_soak_lsan
	cd $(BUILD) && SDL_VIDEODRIVER=offscreen SDL_AUDIODRIVER=dummy \
	  ./tools/soak/quorval_soak $(SOAK_RACES) $(SOAK_FRAMES) $(SOAK_RENDER_EVERY)
	cd $(BUILD) && SDL_VIDEODRIVER=offscreen SDL_AUDIODRIVER=dummy LD_PRELOAD=$(GL_DRIVER_LIBS) \
	  ./tools/soak/quorval_soak_lsan $(SOAK_LSAN_RACES) $(SOAK_FRAMES) $(SOAK_RENDER_EVERY) && echo "LeakSanitizer: no leaks"

# Coverage-guided fuzzing needs clang; each target runs FUZZ_SECONDS.
FUZZ_SECONDS ?= 60
fuzz:
	@bash scripts/install-deps.sh fuzz
	@cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DQUORVAL_FUZZ=ON >/dev/null
	@cmake --build build-fuzz -j $(JOBS) --target fuzz_targets
	@for f in build-fuzz/fuzz/fuzz_*; do echo "== $$f"; $$f -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 2>&1 | grep -E 'stat::number_of_executed_units|ERROR|SUMMARY' ; done

# The music shutting down while its refill runs on the sound thread, under ThreadSanitizer:
# any unguarded touch of the music's state from either side fails it.
tsan: deps
	@cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUORVAL_TSAN=ON >/dev/null
	@cmake --build build-tsan -j $(JOBS) --target tests_audio_input
	cd build-tsan && SDL_VIDEODRIVER=offscreen SDL_AUDIODRIVER=dummy TSAN_OPTIONS="halt_on_error=1 report_signal_unsafe=0" \
	  ./tests/tests_audio_input --gtest_filter='MusicStream.ShuttingDownWhileTheRefillRunsIsSafe'

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
