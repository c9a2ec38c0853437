# shellcheck shell=bash
# Windows x64: Debian has only the compiler and zlib, all else is built from its source packages.

cmake_args=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-windows.cmake"
            -DCMAKE_BUILD_TYPE=Release)
export PAVO_WINDOWS_PREFIX=$prefix

buildPcre2() {
    buildWithCMake "$(sourceFolder pcre2-10)" -DBUILD_SHARED_LIBS=OFF -DPCRE2_BUILD_PCRE2_8=OFF \
        -DPCRE2_BUILD_PCRE2_16=ON -DPCRE2_BUILD_PCRE2GREP=OFF -DPCRE2_BUILD_TESTS=OFF
}

buildQtForWindows() {
    buildQt -xplatform win32-g++ -device-option CROSS_COMPILE=x86_64-w64-mingw32- \
        -I "$prefix/include" -L "$prefix/lib" -D PCRE2_STATIC PCRE2_LIBS=-lpcre2-16
}

# One folder with all that an executable needs beside it.
gatherDlls() {
    local name
    mkdir -p "$prefix/dlls"
    for name in Qt5Core libjsoncpp liblog4cplus; do
        cp "$prefix/bin/$name".dll "$prefix/dlls/"
    done
    cp /usr/x86_64-w64-mingw32/lib/zlib1.dll /usr/x86_64-w64-mingw32/lib/libwinpthread-1.dll \
        "$prefix/dlls/"
    for name in libstdc++-6 libgcc_s_seh-1; do
        cp "$(x86_64-w64-mingw32-g++-posix -print-file-name=$name.dll)" "$prefix/dlls/"
    done
}

buildTarget() {
    steps 7
    step "Fetch sources" fetchSources qtbase-opensource-src libjsoncpp log4cplus pcre2
    step "Build pcre2" buildPcre2
    step "Build jsoncpp" buildJsoncpp
    step "Build log4cplus" buildLog4cplus
    step "Build GoogleTest" buildGoogleTest
    step "Build Qt Core (some 2400 lines)" buildQtForWindows
    step "Gather the DLLs" gatherDlls
}
