#!/usr/bin/env bash
# Builds the host project that the pages show against the installed tree, in both ways of the pages, and runs it
# beside the simulator. Arguments: the tree, its build, the toolchain file or an empty word, the compiler, the name of
# the architecture's library directory, the command that runs a program beside the simulator.
set -euo pipefail
top=$1 build=$2 toolchain=$3 compiler=$4 architecture=$5
shift 5

work=$build/tests/docs/host_project
rm -rf "$work"
mkdir -p "$work/host"
cd "$work"
cmake --install "$build" --prefix "$work/stage/usr" --strip >install.log
cp "$top/docs/samples/host/CMakeLists.txt" "$top/examples/read_credit.cpp" host

cmake -S host -B build ${toolchain:+--toolchain "$toolchain"} -DCMAKE_PREFIX_PATH="$work/stage/usr"
cmake --build build

pages=$(dirname "$(find stage -name libMVX2Interfaces.pc)")
export PKG_CONFIG_LIBDIR=$work/$pages:/usr/lib/$architecture/pkgconfig:/usr/share/pkgconfig
cd host
eval "$(sed "s|^g++|$compiler ${CXXFLAGS:-}|" "$top/docs/samples/host/with_pkg_config.sh")"

LD_LIBRARY_PATH=$work/${pages%/pkgconfig}
export LD_LIBRARY_PATH
for program in ../build/read_credit ./read_credit; do
  "$@" "$program" | grep -x 'credit    1250'
done
