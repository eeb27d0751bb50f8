#!/usr/bin/env bash
# The rows of the speed table, as whole processes: each is run REPEAT times (default 5)
# and the median wall time, user+system CPU time and peak memory are printed.
#
#   bench/drawings/run-batch.sh BUILD/bin WORKDIR [row...]
#
# WORKDIR receives the drawings (made once by make-drawing.py) and the peer reader.
# Rows: big mid small nomodule calls100 other dxflib ezdxf-big ezdxf-mid ezdxf-small.
# The peers need python3-ezdxf and libdxflib-dev: bench/peers/setup-peers installs them
# when a peer row is asked for.
set -euo pipefail
bin=$(cd "$1" && pwd)
work=$2
shift 2
rows=("$@")
[ ${#rows[@]} -gt 0 ] || rows=(big mid small nomodule calls100 other dxflib ezdxf-big ezdxf-mid ezdxf-small)
here=$(cd "$(dirname "$0")" && pwd)
repeat=${REPEAT:-5}
mkdir -p "$work"
cd "$work"

make_drawing() { # name layers lines
    [ -f "$1.dwg" ] && [ -f "$1.dxf" ] && return
    python3 "$here/make-drawing.py" --layers "$2" --lines "$3" --out "$1"
}
make_drawing big 10000 100000
make_drawing mid 2000 100000
make_drawing small 300 20000
cp small.dwg other.dwg

orvex=("$bin/orvex" --batch)
list='(princ (length (zel_get_active_dwg_wiretype)))'
calls='(repeat 100 (zel_get_active_dwg_wiretype))'
# Times of the calls alone, in the process, for the goals that are about calls.
timed() { # label expr
    printf '(let ((t0 (get-internal-real-time))) %s (princ (list "%s" (/ (- (get-internal-real-time) t0) 1e9))))' "$2" "$1"
}

run() { # label command...
    local label=$1
    shift
    local times=()
    for ((i = 0; i < repeat; i++)); do
        /usr/bin/time -f "%e %U %S %M" -o time.txt "$@" > out.txt 2>&1 || {
            echo "$label: failed"; tail -5 out.txt; return; }
        times+=("$(cat time.txt)")
    done
    median() { sort -g | awk -v n="$repeat" '{ v[NR] = $1 } END { print v[int((n + 1) / 2)] }'; }
    local wall cpu mem best
    wall=$(printf '%s\n' "${times[@]}" | awk '{ print $1 }' | median)
    best=$(printf '%s\n' "${times[@]}" | awk '{ print $1 }' | sort -g | head -1)
    cpu=$(printf '%s\n' "${times[@]}" | awk '{ print $2 + $3 }' | median)
    mem=$(printf '%s\n' "${times[@]}" | awk '{ print $4 }' | median)
    printf "%-28s wall %7.3f s (best %.3f)  cpu %7.3f s  peak %6.1f MB\n" \
        "$label" "$wall" "$best" "$cpu" "$(awk -v m="$mem" 'BEGIN { print m / 1024 }')"
    grep -ho '("[a-z0-9 ]*" [0-9.e-]*)' out.txt | sed "s/^/    in the process: /" || true
}

for row in "${rows[@]}"; do
    case $row in
    big | mid | small)
        run "open+list $row" "${orvex[@]}" --eval "$list" "$row.dwg" ;;
    nomodule)
        run "open without module big" "${orvex[@]}" --no-module big.dwg ;;
    calls100)
        run "100 calls, small" "${orvex[@]}" --eval "$(timed "100 calls" "$calls")" small.dwg ;;
    other)
        run "other drawing by path" "${orvex[@]}" \
            --eval "$(timed "by path" "(zel_get_active_dwg_wiretype \"$work/other.dwg\")")" small.dwg ;;
    dxflib)
        "$here/../peers/setup-peers"
        [ -x dxflib_read ] || g++ -O2 -o dxflib_read "$here/../peers/dxflib_read.cpp" -ldxflib
        run "dxflib read big.dxf" ./dxflib_read big.dxf ;;
    ezdxf-big | ezdxf-mid | ezdxf-small)
        "$here/../peers/setup-peers"
        run "ezdxf list ${row#ezdxf-}" /usr/bin/python3 "$here/../peers/ezdxf_list.py" "${row#ezdxf-}.dxf" ;;
    *) echo "unknown row $row" ;;
    esac
done
