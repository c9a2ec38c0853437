# shellcheck shell=bash
# Linux for ThreadSanitizer: it believes only what it has instrumented. Debian's libraries hand
# objects between threads by atomics that it cannot see, and it would report races that are none.

cmake_args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS=-fsanitize=thread)

# Without glib's event loop, which would not be instrumented.
buildQtForTsan() {
    buildQt -sanitize thread -force-debug-info -no-glib
}

buildTarget() {
    steps 5
    step "Fetch sources" fetchSources qtbase-opensource-src libjsoncpp log4cplus
    step "Build jsoncpp" buildJsoncpp
    step "Build log4cplus" buildLog4cplus
    step "Build GoogleTest" buildGoogleTest
    step "Build Qt Core (some 2400 lines)" buildQtForTsan
}
