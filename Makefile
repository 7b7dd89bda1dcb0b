# The front door. Each target installs what it needs first (tools/setup), so that these commands
# on a bare Debian 12 machine are all that a newcomer needs.

SRC ?=
TGT ?= out/pages
ARGS ?= -s PARA_AUTO_LEVELS=1 -s PARA_CONTRAST=120 -s PARA_HIGHLIGHT=125 --ext jpg
JOBS ?= $(shell nproc)
SECONDS_EACH ?= 60
PREFIX ?= /usr/local

.PHONY: all run test asan tsan bench fuzz format lint install times accuracy pictures gallery samples-sheet sizes clean setup
.DEFAULT_GOAL := all

setup:
	@tools/setup

build/%/build.ninja: | setup
	@cmake --preset $* >/dev/null

## Builds everything.
all: build/release/build.ninja
	@cmake --build --preset release -j $(JOBS)

## Converts a folder of scans: the user's SRC, or sample pages that are drawn first.
run: build/release/build.ninja
	@cmake --build --preset release -j $(JOBS) --target velloran velloran-samples
	@tools/run-demo "$(SRC)" "$(TGT)" $(ARGS)

## Builds and runs every test.
test: all
	@ctest --preset release -j $(JOBS)

## Where the time of the release build went; fails when it grew beyond its limits.
times:
	@tools/build-times build/release

## The tests under the address and undefined behaviour sanitizers.
asan: build/asan/build.ninja
	@cmake --build --preset asan -j $(JOBS)
	@ctest --preset asan -j $(JOBS)

## The tests under the thread sanitizer.
tsan: build/tsan/build.ninja
	@cmake --build --preset tsan -j $(JOBS)
	@ctest --preset tsan -j $(JOBS)

## Measures; docs/benchmarks.md tells how to read the figures.
bench: build/release/build.ninja
	@cmake --build --preset release -j $(JOBS)
	@tools/bench build/release

## Each fuzz target for SECONDS_EACH seconds.
fuzz:
	@tools/setup fuzz
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS)
	@tools/fuzz build/fuzz $(SECONDS_EACH)

format:
	@tools/setup format
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

lint: build/release/build.ninja
	@tools/setup lint
	@tools/lint build/release

install: all
	@cmake --install build/release --prefix $(PREFIX)

## The README's pictures.
pictures: all
	@tools/make-pictures build/release

## The pictures of docs/gallery.md.
gallery: build/release/build.ninja
	@cmake --build --preset release -j $(JOBS) --target velloran velloran-samples velloran-contact-sheet
	@tools/make-gallery build/release

## Scans, or sample pages, in black and white by each threshold, side by side in out/.
samples-sheet: build/release/build.ninja
	@cmake --build --preset release -j $(JOBS) --target velloran velloran-samples velloran-contact-sheet
	@tools/make-samples-sheet build/release out/samples-sheet

## How large pages of text become in black and white; fails above 60 KB a page.
sizes: build/release/build.ninja
	@cmake --build --preset release -j $(JOBS) --target velloran velloran-samples
	@tools/measure-sizes build/release

## How right the automatic steps are, on pages of known truth; docs/accuracy.md tells the figures.
accuracy: build/release/build.ninja
	@cmake --build --preset release -j $(JOBS) --target velloran_accuracy velloran_curved_accuracy
	@build/release/samples/velloran-accuracy
	@build/release/samples/velloran-curved-accuracy --count 80

clean:
	rm -rf build out
