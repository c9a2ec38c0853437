# shellcheck shell=bash
# The Debian packages of each purpose. A bare system has none of them.

# A display for windows, and letters for the texts in them.
packages_display="xvfb xauth fonts-dejavu-core fonts-open-sans fonts-wqy-microhei"
# What the examples are written in.
packages_examples="python3 nodejs"
packages_native="cmake ninja-build g++ ccache qtbase5-dev libjsoncpp-dev liblog4cplus-dev libgtest-dev
                 libedit-dev mandoc bash-completion zsh fish pkgconf $packages_examples
                 $packages_display"
packages_sources="dpkg-dev make perl googletest"
packages_windows="$packages_native $packages_sources g++-mingw-w64-x86-64-posix libz-mingw-w64-dev
                  wine wine64"
packages_tsan="$packages_native $packages_sources libpcre2-dev zlib1g-dev"
packages_fuzz="$packages_native clang libclang-rt-14-dev llvm"
packages_soak="gnuplot-nox"
packages_docs="doxygen graphviz fonts-dejavu-core"
packages_package="$packages_windows git zip debhelper lintian"
packages_bench="$packages_native libbenchmark-dev libzmq3-dev libboost-dev dbus gnuplot-nox linux-perf"
packages_format="git clang-format"
packages_lint="$packages_native git clang-tidy shellcheck"

# need PURPOSE...: installs what is missing for these purposes.
need() {
    local purpose name list='' missing sudo=''
    for purpose in "$@"; do
        name=packages_$purpose
        list+=" ${!name}"
    done
    # shellcheck disable=SC2086 # a list of words
    missing=$(comm -13 \
        <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' $list 2> /dev/null \
            | sed -n 's/^installed //p' | sort -u) \
        <(printf '%s\n' $list | sort -u))
    [ -n "$missing" ] || return 0
    say "Installing Debian packages:" $missing
    if [ "$(id -u)" != 0 ]; then
        sudo=sudo
        command -v sudo > /dev/null || die "these packages need root to install, and there is no sudo"
    fi
    local apt="$sudo env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600"
    $apt update >&2
    # shellcheck disable=SC2086
    $apt -o Dpkg::Use-Pty=0 install --yes --no-install-recommends $missing < /dev/null >&2
}
