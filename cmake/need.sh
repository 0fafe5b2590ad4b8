# Sourced by run, test and bench: installs what the machine lacks, with apt as root or through sudo.
#
#   need COMMAND-OR-FILE=PACKAGE ...
#
# A name without a slash is looked up as a command, one with a slash as a file. Where nothing can be installed the
# packages are named and the script stops.

need()
{
    missing=""

    for pair in "$@"; do
        thing="${pair%%=*}"
        package="${pair#*=}"

        case "$thing" in
            */*) ls $thing >/dev/null 2>&1 || missing="$missing $package" ;;
            *) command -v "$thing" >/dev/null 2>&1 || missing="$missing $package" ;;
        esac
    done

    [ -z "$missing" ] && return 0

    if ! command -v apt-get >/dev/null 2>&1; then
        echo "Missing, and there is no apt-get to install them:$missing" >&2
        exit 1
    fi

    if [ "$( id -u )" = 0 ]; then
        as_root=""
    elif command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
        as_root="sudo"
    else
        echo "Missing; install them and call again:$missing" >&2
        exit 1
    fi

    echo "Installing$missing" >&2
    if ! { $as_root apt-get update -qq && $as_root env DEBIAN_FRONTEND=noninteractive \
               apt-get install -y -qq --no-install-recommends $missing; } >/tmp/morvane-install.$$ 2>&1; then
        cat /tmp/morvane-install.$$ >&2
        rm -f /tmp/morvane-install.$$
        exit 1
    fi
    rm -f /tmp/morvane-install.$$
}

# Builds quietly, and prints what the build said only if it fails.
build()
{
    preset="$1"
    shift
    log="$( mktemp )"

    if ! { cmake --preset "$preset" "$@" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        exit 1
    fi

    rm -f "$log"
}
