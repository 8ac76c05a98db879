# The front door. CMake does the work; `make help` lists the doors. Logs of the steps are in build/log.
SHELL := /bin/bash
.NOTPARALLEL:
.DEFAULT_GOAL := help
.PHONY: help run test soak bench checked debug coverage format check-format layers comments tidy exports sdk test-package \
    test-newer-wine clean

export CMAKE_BUILD_PARALLEL_LEVEL ?= $(shell nproc)
export CTEST_PARALLEL_LEVEL ?= $(CMAKE_BUILD_PARALLEL_LEVEL)

STEP := scripts/step
# Programs run under Wine from here on; its server ends with the recipe.
WINE := trap scripts/wine-stop EXIT;
CTEST_LINES := sed -n '/tests passed/,$$p' build/log/ctest-

# $(1): preset; $(2): targets, otherwise everything; $(3): more for the configuration
define configure-and-build
$(STEP) "OpenSSL (the first time: three minutes)" deps-openssl deps/openssl.sh
$(STEP) "libssh2" deps-libssh2 deps/libssh2.sh
$(STEP) "Xerces-C (the first time: two minutes)" deps-xerces deps/xerces.sh
$(STEP) "configure ($(1))" configure-$(1) cmake --preset $(1) $(3)
$(STEP) "build ($(1))" build-$(1) cmake --build --preset $(1) $(if $(2),--target $(2))
endef
define run-ctest
@$(WINE) $(STEP) "test ($(1))" ctest-$(1) ctest --preset $(1) && $(CTEST_LINES)$(1).log
endef

help:
	@echo "make run         build the library and convert the texts of examples/texts with it; SERVERS=1 adds an upload"
	@echo "make test        build and run all tests"
	@echo "make checked     the same tests with traps, library assertions and a guarded heap"
	@echo "make soak        network sessions cut short at every single byte, and files over 4 GiB (15 GB of disk)"
	@echo "make bench       speed against others: a table; FILTER=regex picks; PEERS=1: Abseil, POCO and boost too (built first,"
	@echo "                 five minutes); DOCS=1: all of it, into docs/benchmarks.md; UPLOADS=1: uploads against other programs"
	@echo "make sdk         headers, import library and DLLs into build/sdk, and the examples built against it"
	@echo "make test-package     a zip of the tests for a Windows machine, tried under Wine"
	@echo "make test-newer-wine  the same tests on the Wine of the next Debian release (root; the first time: three minutes)"
	@echo "make debug       build for a debugger into build/debug"
	@echo "make coverage    lines covered by the tests"
	@echo "make format      format the sources; check-format only looks"
	@echo "make layers      includes against the order of the areas"
	@echo "make comments    public declarations without a comment of their own"
	@echo "make tidy        clang-tidy over src, platform, examples and tools"
	@echo "make exports     write docs/exports.txt anew"
	@echo "make clean       remove build"

run: with_servers := $(filter-out 0 no,$(SERVERS))
run:
	@$(STEP) "packages" deps-run deps/install.sh build $(if $(with_servers),servers)
	@$(if $(with_servers),$(STEP) "servers" deps-peers deps/peers.sh)
	@$(call configure-and-build,release,tarn)
	@$(WINE) scripts/run-demo.sh build/release
	@$(if $(with_servers),$(WINE) scripts/show-upload.py build/release)

test:
	@$(STEP) "packages" deps-test deps/install.sh build test
	@$(STEP) "servers for the tests" deps-peers deps/peers.sh
	@$(call configure-and-build,release)
	$(call run-ctest,release)

soak:
	@$(STEP) "packages" deps-test deps/install.sh build test
	@$(STEP) "servers for the tests" deps-peers deps/peers.sh
	@$(call configure-and-build,release)
	@$(WINE) TARN_CUT_STEP=1 $(STEP) "soak" ctest-soak ctest --preset release -R _cuts && $(CTEST_LINES)soak.log && \
	    python3 tests/security/run_security_cases.py cmake/wine-run build/release/bin/tarn.exe build/soak soak

checked:
	@$(STEP) "packages" deps-test deps/install.sh build test
	@$(call configure-and-build,checked)
	$(call run-ctest,checked)

debug:
	@$(STEP) "packages" deps-test deps/install.sh build test
	@$(call configure-and-build,debug)

ifeq ($(UPLOADS),)
# A page of rows has them all.
bench: with_docs := $(filter-out 0 no,$(DOCS))
bench: with_peers := $(filter-out 0 no,$(PEERS) $(DOCS))
bench:
	@$(if $(and $(with_docs),$(FILTER)),echo "DOCS=1 is of a whole run: leave FILTER out"; exit 1)
	@$(STEP) "packages" deps-bench deps/install.sh build bench
	@$(STEP) "Google Benchmark" deps-benchmark deps/benchmark.sh
	@$(if $(with_peers),$(STEP) "Abseil (the first time: two minutes)" deps-abseil deps/abseil.sh)
	@$(if $(with_peers),$(STEP) "POCO (the first time: three minutes)" deps-poco deps/poco.sh)
	@$(if $(with_peers),$(STEP) "boost" deps-boost deps/boost.sh)
	@$(call configure-and-build,release,tarn_bench,-DTARN_BENCH=ON -DTARN_BENCH_PEERS=$(if $(with_peers),ON,OFF) \
	    -Dbenchmark_DIR=$$(deps/benchmark.sh))
	@$(WINE) bench/run.sh build/release "$(FILTER)" $(if $(with_docs),--into docs/benchmarks.md)
else
bench:
	@$(STEP) "packages" deps-bench-uploads deps/install.sh build servers
	@$(STEP) "servers" deps-peers deps/peers.sh
	@$(call configure-and-build,release,tarn sftp_upload)
	@$(WINE) bench/ftp_upload.py build/release && bench/sftp_upload.py build/release
endif

coverage:
	@$(STEP) "packages" deps-coverage deps/install.sh build test coverage
	@$(call configure-and-build,coverage)
	@find build/coverage -name '*.gcda' -delete
	$(call run-ctest,coverage)
	@gcovr --gcov-executable i686-w64-mingw32-gcov-posix -r . --object-directory build/coverage \
	    --filter src/ --filter export/ --filter tools/ --txt --html-details build/coverage/coverage.html

format:
	@$(STEP) "packages" deps-check deps/install.sh check
	@scripts/format.sh

check-format:
	@$(STEP) "packages" deps-check deps/install.sh check
	@$(STEP) "format" format scripts/format.sh --check

layers:
	@$(STEP) "packages" deps-check deps/install.sh check
	@$(STEP) "layers: the check itself" layers-self-test python3 scripts/check-layers.py --self-test
	@$(STEP) "layers" layers python3 scripts/check-layers.py .

comments:
	@$(STEP) "packages" deps-check deps/install.sh check
	@$(STEP) "comments: the check itself" comments-self-test python3 scripts/check-comments.py --self-test
	@$(STEP) "comments" comments python3 scripts/check-comments.py .

tidy:
	@$(STEP) "packages" deps-tidy deps/install.sh build tidy
	@$(STEP) "configure (debug)" configure-debug cmake --preset debug
	@$(STEP) "clang-tidy" tidy scripts/clang-tidy.sh build/debug

exports:
	@$(STEP) "packages" deps-run deps/install.sh build
	@$(call configure-and-build,release,tarnlib)
	@mkdir -p docs && scripts/exports.sh build/release/bin/tarnlib-5-0.dll > docs/exports.txt
	@wc -l docs/exports.txt

sdk:
	@$(STEP) "packages" deps-sdk deps/install.sh build sdk
	@$(call configure-and-build,release,tarnlib tarn)
	@rm -rf build/sdk
	@$(STEP) "install into build/sdk" sdk-install cmake --install build/release --prefix build/sdk
	@$(STEP) "build the examples against it" sdk-examples scripts/build-client.sh build/sdk build/sdk/share/tarnlib/examples build/examples
	@$(STEP) "build a client of ten lines" sdk-client scripts/build-client.sh build/sdk tests/sdk build/client
	@$(WINE) $(STEP) "run them" sdk-run scripts/run-examples.sh build/examples build/client && cat build/log/sdk-run.log
	@$(WINE) $(STEP) "run the service" sdk-service python3 tests/sdk/run_service_cases.py cmake/wine-run \
	    build/examples/service/service.exe build/service

test-package:
	@$(STEP) "packages" deps-test deps/install.sh build test
	@$(call configure-and-build,release)
	@$(WINE) $(STEP) "zip, and its tests in another folder" test-package \
	    scripts/test-package.sh build/release build/test-package.zip && cat build/log/test-package.log

test-newer-wine: test-package
	@$(STEP) "packages" deps-newer-wine deps/install.sh newer-wine
	@$(STEP) "tests on a newer Wine" test-newer-wine scripts/newer-wine.sh build/test-package.zip build/newer-wine/root && \
	    cat build/log/test-newer-wine.log

clean:
	@scripts/wine-stop
	@rm -rf build
