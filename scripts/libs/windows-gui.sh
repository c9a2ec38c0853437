# shellcheck shell=bash
# Windows x64 with Qt's windows: as windows.sh, and Qt Gui, Qt Widgets and what shows them.

. "$root/scripts/libs/windows.sh"

buildLibpng() {
    buildWithCMake "$(sourceFolder libpng1.6)" -DPNG_SHARED=OFF -DPNG_TESTS=OFF \
        -DPNG_EXECUTABLES=OFF
}

# Without what Debian's source packages lack here, and with Windows' own fonts and text layout. Of an
# option given twice Qt takes the second.
buildQtForWindowsGui() {
    buildQt -gui -widgets -xplatform win32-g++ \
        -device-option CROSS_COMPILE=x86_64-w64-mingw32- \
        -no-libjpeg -no-freetype -no-harfbuzz -no-feature-vulkan -no-feature-printer \
        -no-feature-tabletevent -no-feature-textmarkdownreader -no-feature-textmarkdownwriter \
        -system-libpng "LIBPNG_LIBS=-lpng16 -lz" \
        -I "$prefix/include" -L "$prefix/lib" -D PCRE2_STATIC PCRE2_LIBS=-lpcre2-16
}

gatherGuiDlls() {
    gatherDlls
    mkdir -p "$prefix/dlls/platforms"
    cp "$prefix"/bin/Qt5{Gui,Widgets}.dll "$prefix/dlls/"
    cp "$prefix/plugins/platforms/qwindows.dll" "$prefix/dlls/platforms/"
}

buildTarget() {
    steps 8
    step "Fetch sources" fetchSources qtbase-opensource-src libjsoncpp log4cplus pcre2 libpng1.6
    step "Build pcre2" buildPcre2
    step "Build jsoncpp" buildJsoncpp
    step "Build log4cplus" buildLog4cplus
    step "Build GoogleTest" buildGoogleTest
    step "Build libpng" buildLibpng
    step "Build Qt with its widgets (some 5000 lines)" buildQtForWindowsGui
    step "Gather the DLLs" gatherGuiDlls
}
