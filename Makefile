# The two set-up commands of the README: `make rehearse` and `make check`. Both install what is
# missing on a Debian machine, configure into build/ and build; the program is build/update.

BUILD      ?= build
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?=
CTEST_ARGS ?=
SUDO       := $(shell [ "$$(id -u)" = 0 ] || echo sudo)

# Debian packages the build, the tests and the rehearsal need.
PACKAGES := build-essential cmake ninja-build pkg-config python3 python3-polib gettext \
            libwxgtk3.2-dev libx11-dev libgtest-dev libgmock-dev libbenchmark-dev \
            xvfb xauth x11-apps x11-utils imagemagick util-linux \
            fonts-liberation fonts-linuxlibertine fonts-wqy-microhei \
            clang libclang-rt-dev gcovr python3-fusepy file git patchelf zlib1g-dev
PACKAGES += clang-tidy cppcheck clang-format
# Signed updates: the library that checks a signature, and the tool that makes and checks them.
PACKAGES += minisign libsodium-dev

.PHONY: all deps configure build check rehearse asan tsan coverage clean format fuzz bench package po-update \
        i386-root build-i386 check-i386 package-i386 package-native check-oldsystem check-vm
.PHONY: FORCE lint

all: build

deps:
	@missing=$$(for p in $(PACKAGES); do dpkg-query -W -f='$${Status}\n' $$p 2>/dev/null | grep -q '^install ok installed' || echo $$p; done); \
	if [ -n "$$missing" ]; then \
	  echo "Installing:" $$missing; \
	  $(SUDO) apt-get update -qq && \
	  DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -qq --no-install-recommends $(APT_OPTIONS) $$missing; \
	fi

$(BUILD)/build.ninja:
	cmake -S . -B $(BUILD) -G Ninja $(CMAKE_ARGS)

configure: deps $(BUILD)/build.ninja

# CMAKE_ARGS, when given (on the command line or in the environment, even empty), is what the build
# folder is configured with: arguments that differ from those of its last configure make the cache
# anew from them, so that an option left out goes too. Not given, the build keeps its configuration.
ifneq ($(origin CMAKE_ARGS),file)
$(BUILD)/build.ninja: $(BUILD)/cmake-args
endif
$(BUILD)/cmake-args: FORCE
	@mkdir -p $(BUILD)
	@[ -f $@ ] && [ "$$(cat $@)" = '$(strip $(CMAKE_ARGS))' ] || \
	  { rm -f $(BUILD)/CMakeCache.txt; printf '%s\n' '$(strip $(CMAKE_ARGS))' > $@; }
FORCE:

build: configure
	cmake --build $(BUILD) -j $(JOBS)

check: build
	cd $(BUILD) && $(CTEST_ENV) ctest --output-on-failure -j $(JOBS) $(CTEST_ARGS)

# The rehearsal runs the program alone: only its target is built.
rehearse: configure
	cmake --build $(BUILD) -j $(JOBS) --target update
	tools/rehearse $(REHEARSE_ARGS)

# The program against its yardsticks (bench/run-bench): start-up, whole update, memory, idle
# cost and micro-benchmarks. More runs: make bench BENCH_ARGS="--runs 9".
bench: configure
	cmake --build $(BUILD) -j $(JOBS) --target update vtx_bench_minimal vtx_microbench
	bench/run-bench --build $(BUILD) $(BENCH_ARGS)

# After an English text changed in language/texts/en.po: the template texts.pot is made anew from
# it, and every translation is merged with it, so that a translation whose English changed turns
# fuzzy (or untranslated) and the build refuses it until a translator has checked it. en_pellam.po
# (its own wording, texts left empty on purpose) and dev.po (not translated) are kept by hand.
TEXTS        := language/texts
TRANSLATIONS := da sv it nl fr es de ja zh

po-update:
	msgfilter --keep-header --no-wrap -i $(TEXTS)/en.po -o $(TEXTS)/texts.pot sed -e d
	sed -i -e '1s/, English\.$$/: template for translations (make po-update)./' $(TEXTS)/texts.pot
	for l in $(TRANSLATIONS); do \
	  msgmerge --quiet --update --backup=none --previous --no-wrap $(TEXTS)/$$l.po $(TEXTS)/texts.pot || exit 1; \
	done

# The Debian package of the program (installs it as /home/vtx/Code/update): the instrument's, i386,
# into build-i386/, and on another machine also its own (for the rehearsal), into $(BUILD).
ARCH := $(shell dpkg --print-architecture 2>/dev/null)
ifeq ($(ARCH),i386)
package: package-native
else
package: package-native package-i386
endif

package-native: configure
	cmake --build $(BUILD) -j $(JOBS) --target update
	cd $(BUILD) && cpack -G DEB

# The instrument's architecture. A Debian 12 i386 root (tools/i386-root makes it once into
# I386_ROOT and reuses it) holds the libraries and the test tools, with the packages below; the
# i686 cross compiler builds into build-i386/ on this machine against that root, at this machine's
# speed; the suite runs inside the root, as `make check` runs it here. On a kernel without 32-bit
# support, every i386 program runs through qemu-user (tools/i386-root sets that up).
I386_ROOT ?= /var/cache/vtx-i386/root
IN_I386   := $(SUDO) env VTX_I386_ROOT=$(I386_ROOT) tools/i386-root --
# On this machine: the cross compiler, the root's maker, and the emulator for kernels that need it.
I386_HOST_PACKAGES := g++-i686-linux-gnu debootstrap qemu-user-static
# The cross binutils would put their linker scripts and plugin under /usr/lib/i386-linux-gnu, one of
# the instrument's fixed paths, which must not exist on a build machine; the linker carries its
# scripts built in and needs neither.
I386_HOST_APT := -o Dpkg::Options::=--path-exclude=/usr/lib/i386-linux-gnu \
                 -o 'Dpkg::Options::=--path-exclude=/usr/lib/i386-linux-gnu/*'
# In the root: what the build links against and what the tests run; no compiler.
I386_ROOT_PACKAGES := $(filter-out build-essential ninja-build clang libclang-rt-dev gcovr git clang-tidy cppcheck clang-format,$(PACKAGES)) cmake binutils

i386-root:
	@$(MAKE) --no-print-directory deps PACKAGES="$(I386_HOST_PACKAGES)" APT_OPTIONS="$(I386_HOST_APT)"
	$(IN_I386) make --no-print-directory deps PACKAGES="$(I386_ROOT_PACKAGES)"

build-i386: i386-root
	$(MAKE) build BUILD=build-i386 \
	  CMAKE_ARGS="-DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/i686-linux-gnu.cmake -DVTX_I386_ROOT=$(I386_ROOT) $(CMAKE_ARGS)"

check-i386: build-i386
	$(IN_I386) ctest --test-dir build-i386 --output-on-failure -j $(JOBS) $(CTEST_ARGS)

# Made on this machine: its cpack, patchelf and binutils serve the i386 program as well.
package-i386: build-i386
	cd build-i386 && cpack -G DEB

# The instrument's package on an older i386 system than it is built on, Debian 11 (made once into
# OLD_SYSTEM_ROOT by tools/old-system-root): installed there with dpkg and run end to end on a
# private Xvfb display of this machine (the scenarios of tests/e2e/oldsystem_e2e.py).
OLD_SYSTEM_ROOT ?= /var/cache/vtx-i386/bullseye

check-oldsystem: deps package-i386
	$(SUDO) env VTX_OLD_SYSTEM_ROOT=$(OLD_SYSTEM_ROOT) tools/with-xvfb /usr/bin/python3 tests/e2e/runner.py \
	  --old-system --deb "$$(ls -t build-i386/vtx-update_*_i386.deb | head -n 1)"

# The instrument as a virtual machine (tools/virtual-instrument): the i386 package installed in a
# Debian 11 i386 guest, the update run through its real reboot, then power cuts at the update's steps
# (VM_TRIALS of them, drawn with VM_SEED; every chosen step when empty; with VM_TABLE=1 one at each
# point of the power-cut table and the log's line after the backup, as CI runs it) and VM_RANDOM at
# random moments, each checked on the next boot. The disk image is made once into /var/cache/vtx-vm.
VM_PACKAGES := qemu-system-x86 qemu-utils e2fsprogs dosfstools mtools gcc-i686-linux-gnu debootstrap
VM_TRIALS ?=
VM_SEED   ?=
VM_RANDOM ?= 4
VM_TABLE  ?=

check-vm: package-i386
	@$(MAKE) --no-print-directory deps PACKAGES="$(VM_PACKAGES)" APT_OPTIONS="$(I386_HOST_APT)"
	$(SUDO) tools/virtual-instrument all "$$(ls -t build-i386/vtx-update_*_i386.deb | head -n 1)" \
	  $(if $(VM_TRIALS),--count $(VM_TRIALS)) $(if $(VM_SEED),--seed $(VM_SEED)) $(if $(VM_TABLE),--table) \
	  --random $(VM_RANDOM)

# The whole suite under AddressSanitizer + UndefinedBehaviorSanitizer, and under ThreadSanitizer.
# The suppression files list only what is proven to lie inside the toolkit's own libraries.
SAN_ENV := ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 \
           LSAN_OPTIONS=suppressions=$(CURDIR)/tools/lsan.supp:print_suppressions=0 \
           UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
           TSAN_OPTIONS=suppressions=$(CURDIR)/tools/tsan.supp:halt_on_error=1:second_deadlock_stack=1

# The benchmarks, the package and the checks of the tools and generators run no instrumented code
# of the program: the sanitizer passes leave them out.
SAN_SKIP := -LE 'bench|package|tooling' -E 'GenTexts'

asan:
	$(MAKE) check BUILD=build-asan CMAKE_ARGS="-DVTX_SANITIZE=address -DCMAKE_BUILD_TYPE=Debug" CTEST_ENV="$(SAN_ENV)" \
	        CTEST_ARGS="$(SAN_SKIP) $(CTEST_ARGS)"

tsan:
	$(MAKE) check BUILD=build-tsan CMAKE_ARGS="-DVTX_SANITIZE=thread -DCMAKE_BUILD_TYPE=Debug" CTEST_ENV="$(SAN_ENV)" \
	        CTEST_ARGS="$(SAN_SKIP) $(CTEST_ARGS)"

# Line and branch coverage per folder of the program (gcovr; the folders are the layout table's) from
# the suite, end-to-end runs included, less what runs no code of the program: the labels bench,
# package and tooling and the generator's tests (GenTexts), as in the sanitizer passes.
coverage:
	find build-coverage -name '*.gcda' -delete 2>/dev/null || true
	$(MAKE) check BUILD=build-coverage CMAKE_ARGS="-DVTX_COVERAGE=ON -DCMAKE_BUILD_TYPE=Debug" \
	        CTEST_ARGS="$(SAN_SKIP) $(CTEST_ARGS)"
	tools/coverage --build build-coverage --json build-coverage/coverage.json

# The libFuzzer targets with clang, each for VTX_FUZZ_SECONDS (default 60), into build-fuzz.
fuzz: deps
	tools/run-fuzz

# Every C++ file of the tree, tests, fuzz targets and benchmarks included; not the image generator's
# template, which becomes C++ only once its placeholders are filled.
CXX_FILES = $(shell git ls-files '*.cpp' '*.h' ':!:res/*.template.cpp')

format:
	clang-format -i $(CXX_FILES)

# clang-tidy (the check set of .clang-tidy) and cppcheck over the program's sources (tools/lint), and
# every C++ file as .clang-format lays it out (the first difference of each file is shown).
lint: build
	@status=0; JOBS=$(JOBS) tools/lint $(BUILD) || status=1; \
	clang-format --dry-run -Werror --ferror-limit=1 $(CXX_FILES) || \
	  { echo "lint: C++ files differ from .clang-format: run make format" >&2; status=1; }; \
	exit $$status

clean:
	rm -rf build build-asan build-tsan build-coverage build-i386
