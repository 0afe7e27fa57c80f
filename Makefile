# SPDX-License-Identifier: GPL-3.0-or-later
# The everyday commands, one line each. Every one installs first what is missing on this machine.
.PHONY: help demo test run install uninstall check bench format words setup clean
PREFIX ?= /usr/local

help: ; @sed -n 's/^#: //p' Makefile

#: make demo    lets the product find the mix on a private PipeWire graph, records it, and shows what came out
demo: setup ; cmake --preset release && cmake --build --preset release --target bin/vantiro && build/release/bin/vantiro demo

#: make test    builds for work and runs all tests but the long ones
test: setup ; cmake --preset dev $(CONFIGURE) && cmake --build --preset dev && ctest --preset dev && scripts/test-graph dev-graph

#: make run     opens the window
run: setup ; cmake --preset release && cmake --build --preset release --target bin/vantiro-app --target bin/vantiro --target vantiro_media_module && build/release/bin/vantiro-app

#: make install  puts program, tool, desktop entry and icon below PREFIX=/usr/local, where a desktop finds them
install: setup ; cmake --preset release && cmake --build --preset release --target bin/vantiro-app --target bin/vantiro --target vantiro_media_module && scripts/install "$(PREFIX)"

#: make uninstall  takes them away from there again
uninstall: ; @scripts/install --remove "$(PREFIX)"

#: make check   formatting, warnings, clang-tidy, sanitizers and the long tests
check: setup ; scripts/check

#: make bench   builds for speed and runs the benchmarks
bench: setup ; cmake --preset release -DVANTIRO_BENCH=ON && cmake --build --preset release && bench/run

#: make format  writes all sources as clang-format would
format: setup ; find . -path './build*' -prune -o \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format-19 -i

#: make words   brings the catalogue of texts in step with the sources
words: setup ; scripts/words

#: make setup   installs the packages that building, running and testing need
setup: ; @scripts/setup

#: make clean   removes everything that was built
clean: ; rm -rf build
