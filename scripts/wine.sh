# shellcheck shell=bash
# How Windows executables run here: with a Wine folder of their own in the cache, which leaves the
# user's own alone.

export WINEARCH=win64 WINEDEBUG=-all
# Nothing is asked for or downloaded, and no menu entries appear on the desktop.
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="

# Sets $wine_template to a ready-made Wine folder, which the first caller makes while others wait.
wineTemplate() {
    wine_template=$cache/wine-$(dpkg-query -W -f '${Version}' wine64 | tr -c '[:alnum:].\n' _)
    [ ! -e "$wine_template/complete" ] || return 0
    mkdir -p "$cache"
    (
        flock 9
        [ ! -e "$wine_template/complete" ] || exit 0
        say "Setting up Wine, once ..."
        rm -rf "$wine_template"
        # Without a display: it would only show that it is busy. The lock stays out of its hands.
        env -u DISPLAY WINEPREFIX="$wine_template" wine wineboot -i < /dev/null > /dev/null 2>&1 9>&-
        WINEPREFIX=$wine_template wineserver -w 9>&-
        touch "$wine_template/complete"
    ) 9> "$wine_template.lock"
}
