#!/usr/bin/env bash
# The Debian packages hold what they should, and what is unpacked from them works: from C, C++, Python and as a command.
# usage: debian_packages.sh PACKAGE_DIR SOURCE_DIR WORK_DIR    (PACKAGE_DIR: as scripts/package leaves it)
set -euo pipefail
packages=$(realpath "$1")
source_dir=$(realpath "$2")
rm -rf "$3"
mkdir -p "$3"
work=$(realpath "$3")
unset LD_LIBRARY_PATH DESTDIR
failed=0

complain() {
    echo "$*"
    failed=1
}

# What each package may hold, as regular expressions of which each is there at least once; besides its own folder of
# documents.
declare -A contents=(
    [libquarn0]='usr/lib/[^/]+/libquarn\.so\.0(\.[0-9.]+)?'
    [libquarn-dev]='usr/include/quarn\.h usr/include/quarn\.hpp usr/lib/[^/]+/libquarn\.so
        usr/lib/[^/]+/cmake/quarn/quarn[A-Za-z-]+\.cmake usr/lib/[^/]+/pkgconfig/quarn\.pc'
    [quarn]='usr/bin/quarn usr/share/man/man1/quarn[a-z-]*\.1\.gz usr/share/bash-completion/completions/quarn
        usr/share/quarn/schema/[a-z.]+\.json'
    [python3-quarn]='usr/lib/python3/dist-packages/quarn/[A-Za-z_/.]+'
    [quarn-doc]='usr/share/doc/quarn/README\.md usr/share/doc/quarn/CHANGELOG\.md
        usr/share/doc/quarn/docs/[A-Za-z/-]+\.md usr/share/doc/quarn/docs/schema/[a-z.]+\.json
        usr/share/doc/quarn/docs/pictures/[a-z_]+\.svg
        usr/share/doc/quarn/examples/[a-z_]+\.(net|c|cpp|py|csv)'
)

echo "-- what is in which package"
for name in "${!contents[@]}"; do
    file=("$packages/${name}"_*.deb)
    mkdir "$work/$name"
    dpkg-deb -x "${file[0]}" "$work/$name"
    dpkg-deb -e "${file[0]}" "$work/$name.control"
    (cd "$work/$name" && find . ! -type d -printf '%P\n' | sort) >"$work/$name.list"
    own="usr/share/doc/$name/(copyright|changelog\.gz)"
    permitted="$own"
    for pattern in $own ${contents[$name]}; do
        grep -Eqx "$pattern" "$work/$name.list" || complain "$name: nothing is called $pattern"
        permitted+="|$pattern"
    done
    while read -r stranger; do
        complain "$name: not expected: $stranger"
    done < <(grep -Evx "$permitted" "$work/$name.list")
done
[ "$(find "$packages" -maxdepth 1 -name '*.deb' | wc -l)" = ${#contents[@]} ] || complain "not ${#contents[@]} packages"
cat "$work"/*.list | sort >"$work/packaged"
uniq -d "$work/packaged" | sed 's/$/: in two packages/' | { ! grep .; } || failed=1

echo "-- every installed file is in some package"
DESTDIR=$work/all cmake --install "$packages/build" >/dev/null
(cd "$work/all" && find . ! -type d -printf '%P\n' | sort) | diff - "$work/packaged" || failed=1

echo "-- no trace of the machine that built them"
! grep -rlF "$source_dir" "$work"/*/ || failed=1

echo "-- dependencies"
version=$(dpkg-deb -f "$packages"/libquarn0_*.deb Version)
for row in "libquarn0:libstdc\+\+6" "quarn:libquarn0 \(= $version\)" "quarn:libstdc\+\+6" \
    "libquarn-dev:libquarn0 \(= $version\)" "python3-quarn:libquarn0 \(= $version\).*python3-cffi"; do
    grep -Eq "^Depends: .*${row#*:}" "$work/${row%%:*}.control/control" || complain "does not depend like this: $row"
done
grep -q 'libquarn 0 libquarn0' "$work/libquarn0.control/shlibs" || complain "libquarn0: programs will not depend on it"
grep -q 'activate-noawait ldconfig' "$work/libquarn0.control/triggers" || complain "libquarn0: no trigger for ldconfig"

echo "-- unpacked in one place"
root=$work/root
mkdir "$root"
for deb in "$packages"/*.deb; do dpkg-deb -x "$deb" "$root"; done
pc=$(find "$root" -name quarn.pc)
examples=$root/usr/share/doc/quarn/examples
export PKG_CONFIG_PATH=${pc%/*} LD_LIBRARY_PATH=${pc%/*/*}

echo "-- C and C++ by CMake"
cmake -S "$source_dir/tests/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$root/usr" >"$work/configure.log" 2>&1 ||
    { cat "$work/configure.log"; exit 1; }
cmake --build "$work/consumer" >/dev/null
"$work/consumer/consumer"
"$work/consumer/consumer_cpp" "$examples"

echo "-- C and C++ by pkg-config"
for sysroot in "" "$root"; do
    read -ra flags <<<"$(PKG_CONFIG_SYSROOT_DIR=$sysroot pkg-config --cflags --libs quarn)"
    cc -std=c99 "$source_dir/tests/consumer/main.c" -o "$work/consumer_c" "${flags[@]}"
    c++ -std=c++20 "$source_dir/tests/consumer/main.cpp" -o "$work/consumer_cpp" "${flags[@]}"
    "$work/consumer_c"
    "$work/consumer_cpp" "$examples"
done

echo "-- the command"
known='yes  0\.3377'
"$root/usr/bin/quarn" beliefs "$examples/chest_clinic.net" -e asia=yes xray=yes | grep "$known" || failed=1

echo "-- Python"
belief='import quarn, sys
clinic = quarn.Domain.load(sys.argv[1])
clinic.evidence.update(asia="yes", xray="yes")
print("yes ", clinic["tuberculosis"].beliefs["yes"])'
PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=$root/usr/lib/python3/dist-packages \
    /usr/bin/python3 -c "$belief" "$examples/chest_clinic.net" | grep "$known" || failed=1

if command -v lintian >/dev/null; then
    echo "-- lintian"
    lintian --fail-on error --allow-root "$packages"/*.deb || failed=1
fi
exit $failed
