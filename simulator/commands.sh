# shellcheck shell=bash
# The dial of the commands that the application runs. Part of the control tool `unit`, which sources it.

stand_in()
{
    local name=${1:-} how=${2:-} place
    [ -n "$how" ] || misused "command needs a name and what it does; see $tool --help"
    place=$root/usr/bin/$name
    if [[ $name == */* ]] || { [ ! -f "$place" ] && [ ! -f "$state/missing_$name" ]; }; then
        misused "command: this unit has no '$name'"
    fi
    shift
    # What it did before is over, whatever comes.
    case $how in
    fail) [ $# -eq 1 ] || { expect 2 "$@" && number "$2"; } ;;
    hang) expect 2 "$@" && seconds "$2" 600 ;;
    missing | nonsense | ok) expect 1 "$@" ;;
    *) misused "command: unknown value '$how'; fail, hang, missing, nonsense, ok" ;;
    esac
    stand_in_ok "$name"
    case $how in
    ok) ;;
    missing) mv "$place" "$state/missing_$name" ;;
    *) keep "command_$name" "$*" ;;
    esac
}

stand_in_ok()
{
    [ ! -f "$state/missing_$1" ] || mv "$state/missing_$1" "$root/usr/bin/$1"
    rm -f "$state/command_$1"
}

# stand_ins_text: those that do not do what they should.
stand_ins_text()
{
    local file text=
    for file in "$state"/missing_* "$state"/command_*; do
        case $file in
        *'*') ;;
        */missing_*) text+=", ${file##*/missing_} missing" ;;
        *) text+=", ${file##*/command_} $(<"$file")" ;;
        esac
    done
    printf '%s' "${text:-, all there}" | cut -c 3-
}
