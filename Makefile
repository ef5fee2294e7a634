# SPDX-License-Identifier: MIT
# The front door. `make` alone says what there is.
.PHONY: help run test install package dist check bench demo fuzz screenshots icons format clean

PRESET ?= dev
PREFIX ?= /usr/local

help:
	@echo "make run          build Norvo and start it (with the demo node where no node answers)"
	@echo "make test         build and run all tests"
	@echo "make install      build Norvo and install it below PREFIX, by default /usr/local"
	@echo "make package      build a Debian package, build/release/norvo_<version>_<architecture>.deb"
	@echo "make dist         pack the sources of the last commit, build/norvo-<version>.tar.gz"
	@echo "make check        the whole gate: format, warnings, sanitizers, static analysis, package"
	@echo "make bench        measure against the demo node"
	@echo "make demo         start the demo node on 127.0.0.1:5001"
	@echo "make fuzz         fuzz each parser for a minute"
	@echo "make screenshots  take the pictures of the user guide anew"
	@echo "make icons        draw the icon's PNG files anew from its SVG"
	@echo "make format       format all sources"

run:
	@tools/install-deps show
	@cmake --preset release >/dev/null && cmake --build --preset release --target norvo norvo-demo-node
	@tools/run

test:
	@tools/install-deps
	@cmake --preset $(PRESET) >/dev/null && cmake --build --preset $(PRESET)
	@QT_QPA_PLATFORM=offscreen ctest --preset $(PRESET)

install:
	@tools/install-deps
	@cmake --preset release >/dev/null && cmake --build --preset release --target norvo
	@cmake --install build/release --prefix "$(PREFIX)"

package:
	@tools/install-deps package
	@cmake --preset release >/dev/null && cmake --build --preset release --target norvo
	@cd build/release && cpack

dist:
	@tools/make-dist

check:
	@tools/install-deps check
	@tools/check

bench:
	@tools/install-deps
	@cmake --preset release >/dev/null && cmake --build --preset release
	@for program in build/release/bench/bench_*; do \
		[ -x $$program ] && [ -f $$program ] && echo "# $$(basename $$program)" && $$program || exit 1; done

demo:
	@tools/install-deps
	@cmake --preset release >/dev/null && cmake --build --preset release --target norvo-demo-node
	@build/release/demo/norvo-demo-node --pins 200

fuzz:
	@tools/install-deps check
	@cmake --preset fuzz >/dev/null && cmake --build --preset fuzz
	@for target in build/fuzz/fuzz/fuzz_*; do \
		[ -x $$target ] && [ -f $$target ] || continue; name=$$(basename $$target); \
		mkdir -p build/fuzz/found/$$name; \
		$$target -max_total_time=60 build/fuzz/found/$$name fuzz/corpus/$$name || exit 1; done

screenshots:
	@tools/install-deps show
	@cmake --preset release >/dev/null && cmake --build --preset release --target norvo-screenshots
	@tools/with-display build/release/demo/norvo-screenshots docs/images

icons:
	@tools/install-deps icons
	@for size in 16 22 24 32 48 64 128; do \
		rsvg-convert -w $$size -h $$size resources/icons/app-icon.svg -o resources/icons/app-icon-$$size.png || exit 1; done
	@rsvg-convert resources/icons/app-icon.svg -o resources/icons/app-icon.png

format:
	@tools/list-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf build
