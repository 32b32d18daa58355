#!/usr/bin/env bash
# The free MPS reader, examples/mps.qxm:
#   check_mps.sh QUARRIX QUARRIX_LP SOURCE_DIR files
#     the bundled model and models written by hand: values and refusals;
#   check_mps.sh QUARRIX QUARRIX_LP SOURCE_DIR cbc
#     models written by quarrix-lp, turned into MPS by CBC, read back: the
#     value Quarrix reaches equals CBC's optimum of the same file (skipped
#     without cbc: scripts/setup.sh lp).
set -u
quarrix=$1 quarrixlp=$2 source=$3 mode=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$source"
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# The last "objective = v" of a run of the reader on file $1.
objective() {
    "$quarrix" examples/mps.qxm file="$1" qxTimeLimit=2 qxNbThreads=1 > "$work/out" 2> "$work/err"
    sed -n 's/^objective = //p' "$work/out" | tail -n 1
}

case $mode in
files)
    value=$(objective examples/data/tiny01.mps)
    [ "$value" = 11 ] || fail "tiny01.mps: objective '$value', expected 11"

    # A model like it, minimised, in another layout: the sets' names left
    # out, tabs, a comment, a second N row (dropped). Minimum 6: the E row
    # takes a or b, the G row c or d; b and d cost 3 + 2, plus the constant 1.
    printf '%s\n' 'NAME T2' 'ROWS' ' N value' ' N other' ' L weight' ' E oneof' ' G atleast' 'COLUMNS' \
        "    MARKER 'MARKER' 'INTORG'" '* items' \
        $'\ta\tvalue\t4\tweight\t3' '    a oneof 1 other 7' '    b value 3 weight 2' '    b oneof 1' \
        '    c value 5 weight 4' '    c atleast 1' '    d value 2 weight 1' '    d atleast 1' \
        "    MARKER 'MARKER' 'INTEND'" 'RHS' '    weight 7 oneof 1' '    atleast 1 value -1' \
        'BOUNDS' ' UP a 1' ' UP b 1' ' UP c 1.0' ' UP d 1' 'ENDATA' > "$work/t2.mps"
    value=$(objective "$work/t2.mps")
    [ "$value" = 6 ] || { fail "t2.mps: objective '$value', expected 6"; cat "$work/err"; }

    # Refusals, each naming what it refuses.
    refuse() {
        local name=$1 expected=$2
        shift 2
        printf '%s\n' 'NAME R' 'ROWS' ' N cost' ' G r' 'COLUMNS' "    MARKER 'MARKER' 'INTORG'" "$@" 'ENDATA' \
            > "$work/$name.mps"
        if "$quarrix" examples/mps.qxm file="$work/$name.mps" > "$work/out" 2> "$work/err"; then
            fail "$name: accepted"
        elif ! grep -qF "$expected" "$work/err"; then
            fail "$name: $(cat "$work/err")"
        fi
    }
    refuse fraction "the number '0.5' is not an integer" '    x cost 1 r 0.5' 'BOUNDS' ' BV B x'
    refuse exponent "the number '1e2' is not an integer" '    x cost 1e2 r 1' 'BOUNDS' ' BV B x'
    refuse unbounded "integer column 'x' has no upper bound" '    x cost 1 r 1'
    refuse continuous "column 'y' is continuous" '    x cost 1 r 1' "    MARKER 'MARKER' 'INTEND'" \
        '    y cost 1 r 1' 'BOUNDS' ' BV B x' ' UP B y 1'
    refuse free "bound FR on column 'x' keeps it from being binary" '    x cost 1 r 1' 'BOUNDS' ' FR B x'
    refuse general "column 'x' has bounds 0 to 3, not 0-1" '    x cost 1 r 1' 'BOUNDS' ' UP B x 3'
    refuse row "unknown row 's'" '    x cost 1 s 1' 'BOUNDS' ' BV B x'
    refuse section "unknown section SOS" '    x cost 1 r 1' 'BOUNDS' ' BV B x' 'SOS'
    ;;
cbc)
    command -v cbc > /dev/null || { echo "SKIPPED: cbc is not installed (scripts/setup.sh lp installs it)"; exit 77; }
    for model in examples/setcover.qxm tests/lp/logic.qxm "examples/maxcut.qxm file=tests/lp/maxcut_12.txt"; do
        name=$(basename "${model%% *}" .qxm)
        # shellcheck disable=SC2086
        set -- $model
        program=$1
        shift
        "$quarrixlp" "$program" "$work/$name.lp" "$@" > "$work/lp.log" 2>&1 || { fail "$name: quarrix-lp"; continue; }
        # CBC writes the MPS file it reads; it minimises it (MPS has no
        # sense there), and so does the reader.
        cbc "$work/$name.lp" -export "$work/$name.mps" > /dev/null 2>&1
        [ -s "$work/$name.mps" ] || { fail "$name: cbc wrote no MPS file"; continue; }
        optimum=$(cbc "$work/$name.mps" solve quit 2>&1 | awk '/^Objective value:/ { v = sprintf("%.0f", $3); print (v == "-0" ? "0" : v) }')
        value=$(objective "$work/$name.mps")
        echo "$name: cbc $optimum, quarrix $value"
        [ -n "$optimum" ] && [ "$optimum" = "$value" ] || { fail "$name"; cat "$work/err"; }
    done
    ;;
*) echo "unknown mode $mode"; exit 2 ;;
esac
[ $failures -eq 0 ] && echo "mps $mode: ok"
[ $failures -eq 0 ]
