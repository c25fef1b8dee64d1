# Thin: every target calls the presets of CMakePresets.json or a script of tools/.
.DEFAULT_GOAL := help
.PHONY: help play test bench lint sanitize coverage mutate fuzz install packages
STEP := tools/step.sh
RELEASE := build/release
ORBEL := $(RELEASE)/host/orbel
PREFIX ?= /usr/local
export CTEST_PARALLEL_LEVEL ?= 2

# The foundation, timing, show control, loading and the player.
ENGINE_TESTS := exc_test exc_lock_impl_test samples_ticks_converter_test ob_show_control_test file_loader_test audio_player_test
# What runs under the sanitizers: the engine, what it does on many threads, and what is left when something is refused.
SANITIZED := $(ENGINE_TESTS) lock_order_test stress_test reference_core_test reference_player_core_test \
  session_memory_test show_out_of_memory_test audio_memory_test audio_segment_faults_test memory_reserve_test
# What runs under the thread sanitizer besides: devices and the live output; and under the address sanitizer: devices,
# loaders that fail, disks that are full, and every input that has ever broken a fuzz target.
LIVE_TESTS := audio_output_test audio_device_test audio_jack_test live_show_test
DEVICE_TESTS := audio_output_test audio_gate_test audio_device_test audio_desktop_test audio_jack_test audio_pulse_test
FAILURE_TESTS := audio_encode_test audio_player_threads_test fuzz_regression_test
# The engine is covered by its own tests alone: what only a whole show reaches counts as not covered.
COVERED := $(ENGINE_TESTS) player_wrapper_test
READER_TESTS := standard_midi_file_test toml_test timeline_test show_folder_test show_out_of_memory_test song_clock_test
# Every test carries the name of its program as a label.
labels_of = ^($(shell echo $(1) | tr ' ' '|'))$$

help:
	@echo "make play      install what is missing, build, write a demo show to demo-show/ and play it"
	@echo "make test      install what is missing, build with g++ and clang++, run every check and every test"
	@echo "make lint      format, layers, words and clang-tidy"
	@echo "make sanitize  the engine's tests under the address, undefined-behaviour and thread sanitizers"
	@echo "make coverage  lines and branches of the engine that the tests reach; fails under 98 % and 90 %,"
	@echo "               and when the tests of the readers leave one of their branches out"
	@echo "make mutate    break the engine in one place after the other: do its tests notice? (four hours)"
	@echo "make fuzz      a minute of random bytes for every reader and the planner (SECONDS=60)"
	@echo "make bench     the benchmarks, beside peers that it installs; figures and goals in docs/performance.md"
	@echo "make stress    50,000 random commands against a live player, plain and under the sanitizers; half an hour;"
	@echo "               then every allocation of opening, rendering and checking a show refused; two hours"
	@echo "make soak      eight hours of song time at the speed of the machine; some minutes"
	@echo "make restarts  a JACK server that is killed, ended and hung, twenty times each, in a vamp; minutes"
	@echo "make minute    a minute of a show to a JACK server in real time: xruns, underruns, the machine's lateness"
	@echo "make install   headers, library, program and CMake package to PREFIX ($(PREFIX))"

packages:
	@tools/install_packages.sh

.PHONY: release
release: packages
	@$(STEP) "configure release" cmake --preset release --log-level=WARNING
	@$(STEP) "build the program" cmake --build --preset release --target orbel_program

# A show that exists is played as it is; delete demo-show/ to have it written anew.
play: release
	@[ -d demo-show ] || $(STEP) "write the demo show" $(ORBEL) demo demo-show || { rm -rf demo-show; exit 1; }
	@$(ORBEL) play demo-show

test: packages
	@$(STEP) "format" tools/check_format.sh
	@$(STEP) "layers" tools/check_layers.py
	@$(STEP) "configure g++" cmake --preset debug --log-level=WARNING
	@$(STEP) "build with g++: everything, every header alone" cmake --build --preset debug
	@$(STEP) "configure clang++" cmake --preset clang --log-level=WARNING
	@$(STEP) "build with clang++: lock annotations" cmake --build --preset clang
	@$(MAKE) --no-print-directory engine-only sanitize
	@$(STEP) "all tests" ctest --preset debug

.PHONY: engine-only
engine-only: packages
	@$(STEP) "configure the engine alone" cmake --preset engine-only --log-level=WARNING
	@$(STEP) "build the engine alone" cmake --build --preset engine-only

sanitize: packages
	@$(STEP) "configure asan" cmake --preset asan --log-level=WARNING
	@$(STEP) "build for asan" cmake --build --preset asan --target $(SANITIZED) $(DEVICE_TESTS) $(FAILURE_TESTS)
	@$(STEP) "addresses and undefined behaviour" ctest --preset asan -L '$(call labels_of,$(SANITIZED) $(DEVICE_TESTS) $(FAILURE_TESTS))'
	@$(STEP) "configure tsan" cmake --preset tsan --log-level=WARNING
	@$(STEP) "build for tsan" cmake --build --preset tsan --target $(SANITIZED) $(LIVE_TESTS)
	@$(STEP) "threads" ctest --preset tsan -L '$(call labels_of,$(SANITIZED) $(LIVE_TESTS))'

lint: packages
	@$(STEP) "format" tools/check_format.sh
	@$(STEP) "layers" tools/check_layers.py
	@$(STEP) "words" tools/check_words.py
	@$(STEP) "configure clang++" cmake --preset clang --log-level=WARNING
	@$(STEP) "clang-tidy" tools/lint.sh

coverage: packages
	@$(STEP) "configure coverage" cmake --preset coverage --log-level=WARNING
	@$(STEP) "build for coverage" cmake --build --preset coverage --target $(COVERED)
	@$(STEP) "the engine's tests" ctest --preset coverage -L '$(call labels_of,$(COVERED))'
	@$(STEP) "coverage" tools/coverage.sh
	@$(STEP) "configure for the readers" cmake --preset reader-coverage --log-level=WARNING
	@$(STEP) "build the readers' tests" cmake --build --preset reader-coverage --target $(READER_TESTS)
	@$(STEP) "branches of the readers" tools/reader_coverage.sh

mutate: packages
	@$(STEP) "configure for mutations" cmake --preset mutate --log-level=WARNING
	@tools/mutate.py --minutes $(or $(MINUTES),240)

fuzz: packages
	@$(STEP) "configure fuzz" cmake --preset fuzz --log-level=WARNING
	@$(STEP) "build the fuzzers" cmake --build --preset fuzz --target fuzzers
	@tools/fuzz.sh $(SECONDS)

bench: packages
	@benchmarks/install_peers.sh
	@$(STEP) "configure benchmarks" cmake --preset bench --log-level=WARNING
	@$(STEP) "build the benchmarks" cmake --build --preset bench --target benchmarks
	@for each in build/bench/benchmarks/*_benchmark; do $$each || exit; done
	@build/bench/benchmarks/command_to_sound
	@benchmarks/lookup_ratios.py build/bench
	@benchmarks/whole_programs.py build/bench

# The long forms of tests that the suite runs in short.
STRESS := tests/stress/stress_test --gtest_filter='*Player*:LockTable*'
# Four tests, each of which mostly waits for programs that it has started: they run at the same time.
REFUSED := tests/faults/faults_test --gtest_filter='*RefusedAnywhere.ToARender*:*RefusedAnywhere.ToACheck*'
.PHONY: stress soak
stress: export ORBEL_STRESS_COMMANDS ?= 50000
stress: export TSAN_OPTIONS = suppressions=$(CURDIR)/tools/sanitizers/threads.supp:second_deadlock_stack=1
stress: export LSAN_OPTIONS = suppressions=$(CURDIR)/tools/sanitizers/leaks.supp:print_suppressions=0
stress: packages
	@for each in debug asan tsan; do \
	  $(STEP) "configure $$each" cmake --preset $$each --log-level=WARNING && \
	  $(STEP) "build for $$each" cmake --build --preset $$each --target stress_test && \
	  build/$$each/$(STRESS) || exit; \
	done
	@$(STEP) "build" cmake --build --preset debug --target session_memory_test faults_test
	@$(STEP) "every single allocation refused" env ORBEL_EVERY_ALLOCATION=1 build/debug/tests/faults/session_memory_test
	@seq 0 3 | $(STEP) "every single call of malloc refused" xargs -P 4 -I{} env ORBEL_EVERY_ALLOCATION=1 \
	  GTEST_TOTAL_SHARDS=4 GTEST_SHARD_INDEX={} build/debug/$(REFUSED)

.PHONY: jack-test
jack-test: packages
	@$(STEP) "configure" cmake --preset debug --log-level=WARNING
	@$(STEP) "build" cmake --build --preset debug --target orbel_jack_test

# Twenty times each: killed, ended, and hung.
.PHONY: restarts
restarts: export ORBEL_RESTARTS ?= 60
restarts: jack-test
	@build/debug/tests/host/orbel_jack_test --gtest_filter='*BehindEveryRestart*'

# A minute in real time, with what is lost beside the machine's own lateness.
.PHONY: minute
minute: export ORBEL_LIVE_SECONDS ?= 60
minute: jack-test
	@build/debug/tests/host/orbel_jack_test --gtest_filter='JackInRealTime*'

soak: export ORBEL_SOAK_MINUTES ?= 480
soak: packages
	@$(STEP) "configure" cmake --preset debug --log-level=WARNING
	@$(STEP) "build" cmake --build --preset debug --target soak_test
	@build/debug/tests/soak/soak_test

install: release
	@$(STEP) "build" cmake --build --preset release
	@cmake --install build/release --prefix $(PREFIX)
