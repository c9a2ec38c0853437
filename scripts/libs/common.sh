# shellcheck shell=bash
# The parts that the recipes of all targets share. Set by the caller: $work, a folder to build in,
# $prefix, the folder to install to, $jobs and $cmake_args, what CMake needs for the target.

# fetchSources PACKAGE...: unpacks Debian's source packages, patches applied, below $work. Which
# servers to ask is taken from the machine's own configuration, which stays as it is: only a copy of
# it in $work asks for sources. A server that lacks some does not matter as long as another has them:
# of a package's versions the newest that can be had is taken.
fetchSources() {
    local apt=$work/apt file package version
    mkdir -p "$apt/parts" "$apt/state" "$apt/cache"
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ ! -e "$file" ] || sed -nE 's/^\s*deb(-src)?\s/deb-src /p' "$file" | sort -u \
            > "$apt/parts/$(basename "$file" .list).list"
    done
    for file in /etc/apt/sources.list.d/*.sources; do
        [ ! -e "$file" ] || sed -E 's/^Types:.*/Types: deb-src/' "$file" \
            > "$apt/parts/$(basename "$file")"
    done
    local options=(-o "Dir::Etc::sourcelist=/dev/null" -o "Dir::Etc::sourceparts=$apt/parts"
                   -o "Dir::State=$apt/state" -o "Dir::Cache=$apt/cache")
    cd "$work"
    apt-get "${options[@]}" update || echo "Going on with the lists that could be had."
    for package in "$@"; do
        for version in $(apt-cache "${options[@]}" showsrc --only-source "$package" \
            | sed -n 's/^Version: //p' | sort -rVu); do
            ! apt-get "${options[@]}" source "$package=$version" || continue 2
        done
        echo "No source of $package could be had." >&2
        return 1
    done
}

# sourceFolder PACKAGE-MAJOR: where fetchSources has put it.
sourceFolder() {
    local found=("$work/$1"*/)
    if [ ! -d "${found[0]}" ]; then
        echo "Debian has no $1 here." >&2
        return 1
    fi
    echo "${found[0]%/}"
}

# buildWithCMake SOURCE OPTIONS...
buildWithCMake() {
    local source=$1 build
    shift
    build=$work/build-$(basename "$source")
    cmake -S "$source" -B "$build" -G Ninja -DCMAKE_INSTALL_PREFIX="$prefix" \
        -DCMAKE_INSTALL_LIBDIR=lib "${cmake_args[@]}" "$@"
    cmake --build "$build" --parallel "$jobs"
    cmake --install "$build"
}

buildJsoncpp() {
    buildWithCMake "$(sourceFolder libjsoncpp-1.9)" -DJSONCPP_WITH_TESTS=OFF \
        -DJSONCPP_WITH_POST_BUILD_UNITTEST=OFF -DBUILD_SHARED_LIBS=ON -DBUILD_STATIC_LIBS=OFF \
        -DBUILD_OBJECT_LIBS=OFF
}

# With char, not wchar_t, as Debian's own. Without its thread pool, which serves asynchronous appenders
# only: when Windows unloads the DLL at exit, the pool waits for threads that are gone already.
buildLog4cplus() {
    buildWithCMake "$(sourceFolder log4cplus-2.0)" -DUNICODE=OFF \
        -DLOG4CPLUS_ENABLE_THREAD_POOL=OFF -DLOG4CPLUS_BUILD_TESTING=OFF -DWITH_UNIT_TESTS=OFF \
        -DLOG4CPLUS_BUILD_LOGGINGSERVER=OFF -DLOG4CPLUS_ENABLE_DECORATED_LIBRARY_NAME=OFF
}

buildGoogleTest() {
    buildWithCMake /usr/src/googletest -DBUILD_SHARED_LIBS=OFF
}

# buildQt OPTIONS...: Qt5Core and the tools that a build with it runs.
buildQt() {
    local source build=$work/build-qt
    source=$(sourceFolder qtbase-opensource-src-5.15)
    mkdir -p "$build"
    cd "$build"
    # configure builds qmake first, with what make takes from the environment.
    export MAKEFLAGS=-j$jobs
    "$source/configure" -prefix "$prefix" -opensource -confirm-license -release -shared \
        -no-gui -no-widgets -no-dbus -no-opengl -no-icu -no-pch \
        -no-feature-sql -no-feature-network -no-feature-xml -no-feature-concurrent \
        -system-zlib -system-pcre -nomake examples -nomake tests -nomake tools "$@"
    make
    make install
}
