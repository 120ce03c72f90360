#!/usr/bin/env bash
# Runs the benchmark programs of a build directory against their gfortran
# peers and prints values per second for each, with the ratio.
#
#   bench/run_benchmarks.sh build/bench
#
# List-directed WRITE of default INTEGERs to unit 11 (the implicitly
# connected file fort.11 in a scratch directory), in two shapes:
#   many  write (11, *) (a(i), i = 1, n)           one statement, n items
#   each  do i = 1, n; write (11, *) a(i); end do  n statements, one item each
# Each run is a whole process, timed from its start to its exit, so the
# final flush of the unit buffer at the end of the program is in the time.
# Rates come from the wall time; the CPU time (user + system) is shown too,
# since it suffers less when other work shares the machine.
# The best of $KRM_BENCH_REPEATS runs counts; the two peers take turns to
# go first.
#
# The files are not byte-for-byte equal: gfortran pads every default integer
# to a field of 12 characters in list-directed output, while libkrm writes
# the shortest form. What is compared is the sequence of values (the files
# split at blanks and newlines) and the number of records.
#
# Then, where they were built, decimal conversion against libquadmath and
# glibc, and REAL(16) arithmetic against libgcc and libquadmath (see the end).
# Before those, the list-directed WRITE again with REAL(8) values
# (list_write_real_krm against list_write_real_gfortran): gfortran writes 17
# significant digits in a fixed field, libkrm the shortest digits, so the
# values are compared as numbers (each read and printed again with 17
# digits); and cvt_real_bench times the shortest-digit conversion per value
# against std::to_chars.
#
# Environment: KRM_BENCH_N (values per run, default 10000000),
# KRM_BENCH_REPEATS (runs per program and shape, default 5, at least 3),
# KRM_BENCH_DECIMAL_N (values per set of the decimal benchmark).
set -euo pipefail

build=$(cd "${1:?usage: run_benchmarks.sh BUILD_DIR}" && pwd)
bin="$build/bench"
n=${KRM_BENCH_N:-10000000}
repeats=${KRM_BENCH_REPEATS:-5}
[ "$repeats" -ge 3 ] || repeats=3

# use_family NAME: the programs of one family of benchmarks (integer, real).
use_family() {
    krm="$bin/list_write_$1_krm"
    gf="$bin/list_write_$1_gfortran"
    numeric=0
    if [ "$1" = integer ]; then
        krm="$bin/list_write_krm"
        gf="$bin/list_write_gfortran"
    else
        numeric=1
    fi
    [ -x "$krm" ] || { echo "run_benchmarks: $krm is missing; build $build first" >&2; exit 1; }
    have_gf=1
    [ -x "$gf" ] || { have_gf=0; echo "run_benchmarks: no gfortran peer ($gf); libkrm alone" >&2; }
}
use_family integer

work=$(mktemp -d "${TMPDIR:-/tmp}/krm-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"

# run_once PROGRAM SHAPE: runs the program once in the scratch directory on a
# fresh fort.11 and sets run_wall and run_cpu to its wall time and its CPU
# time (user + system), in microseconds.
run_once() {
    rm -f fort.11
    local times real user sys
    times=$( { TIMEFORMAT='%3R %3U %3S'; time "$1" "$2" "$n" >/dev/null 2>run.err; } 2>&1 ) || {
        echo "run_benchmarks: $(basename "$1") $2 failed:" >&2
        cat run.err >&2
        exit 1
    }
    read -r real user sys <<<"${times//[.,]/}"
    run_wall=$((10#$real * 1000))
    run_cpu=$(((10#$user + 10#$sys) * 1000))
}

# The values of a list-directed output file, one per line, in order; reals
# as numbers, so that different digit strings of one value compare equal.
values_of() {
    if [ "$numeric" = 1 ]; then
        tr -s ' \n' '\n' <"$1" | grep -v '^$' | awk '{ printf "%.17g\n", $1 + 0 }'
    else
        tr -s ' \n' '\n' <"$1" | grep -v '^$'
    fi
}

# check SHAPE: compares the files the two peers left for the shape.
check() {
    local shape=$1 k="krm.$1.out" g="gf.$1.out"
    local kv gv kr gr ks gs
    kv=$(values_of "$k" | wc -l)
    kr=$(wc -l <"$k")
    ks=$(values_of "$k" | md5sum | cut -d' ' -f1)
    if [ "$have_gf" = 0 ]; then
        echo "check $shape: libkrm wrote $kv values in $kr records"
        [ "$kv" -eq "$n" ] || { echo "FAIL: expected $n values" >&2; return 1; }
        return 0
    fi
    gv=$(values_of "$g" | wc -l)
    gr=$(wc -l <"$g")
    gs=$(values_of "$g" | md5sum | cut -d' ' -f1)
    printf 'check %s: libkrm %d values in %d records (%d bytes), gfortran %d values in %d records (%d bytes)\n' \
        "$shape" "$kv" "$kr" "$(stat -c %s "$k")" "$gv" "$gr" "$(stat -c %s "$g")"
    local ok=1
    [ "$kv" -eq "$n" ] && [ "$gv" -eq "$n" ] || { echo "FAIL: expected $n values from each" >&2; ok=0; }
    [ "$ks" = "$gs" ] || { echo "FAIL: the sequences of values differ" >&2; ok=0; }
    if [ "$shape" = each ]; then
        [ "$kr" -eq "$n" ] && [ "$gr" -eq "$n" ] || { echo "FAIL: expected $n records from each" >&2; ok=0; }
    elif [ "$kr" -ne "$gr" ]; then
        # gfortran folds a record at its default RECL of 2**30 bytes; libkrm
        # never folds without RECL=.
        echo "note: the record counts differ; a long enough list folds in gfortran only"
    fi
    [ "$ok" = 1 ] && echo "  same $n values in the same order (md5 of the values $ks)"
    [ "$ok" = 1 ]
}

rate() { awk -v n="$n" -v us="$1" 'BEGIN { printf "%.3g", n / (us / 1e6) }'; }

seconds() { awk -v t="$1" 'BEGIN { printf "%.3fs", t / 1e6 }'; }
ratio() { awk -v k="$1" -v g="$2" 'BEGIN { if (k > 0) printf "%.2f", g / k; else printf "-" }'; }

# bench_family WHAT: the runs, checks and table of the current family.
bench_family() {
echo "list-directed WRITE of $n $1 to unit 11; best of $repeats whole-process runs"
echo "load average before the runs: $(cut -d' ' -f1-3 /proc/loadavg 2>/dev/null || echo unknown)"
if [ "$numeric" = 1 ]; then
    echo "(gfortran writes 17 digits in a field, libkrm the shortest digits: values are compared as numbers)"
else
    echo "(gfortran pads each integer to width 12, libkrm writes the shortest form: values are compared, not bytes)"
fi
echo
declare -A wall cpu
for shape in many each; do
    for ((r = 1; r <= repeats; r++)); do
        order="krm gf"
        if ((r % 2 == 0)); then order="gf krm"; fi
        for peer in $order; do
            if [ "$peer" = gf ] && [ "$have_gf" = 0 ]; then continue; fi
            if [ "$peer" = krm ]; then prog=$krm; else prog=$gf; fi
            run_once "$prog" "$shape"
            w=$run_wall c=$run_cpu
            key=$peer.$shape
            if [ -z "${wall[$key]:-}" ] || [ "$w" -lt "${wall[$key]}" ]; then wall[$key]=$w; fi
            if [ -z "${cpu[$key]:-}" ] || [ "$c" -lt "${cpu[$key]}" ]; then cpu[$key]=$c; fi
            if [ "$r" -eq "$repeats" ]; then mv fort.11 "$peer.$shape.out"; fi
        done
    done
    check "$shape" || status=1
    rm -f ./*."$shape".out
done


echo
printf '%-5s %-29s %13s %15s %6s\n' shape statement "libkrm val/s" "gfortran val/s" ratio
for shape in many each; do
    case $shape in
        many) what="write (11,*) (a(i), i=1,n)" ;;
        each) what="n x write (11,*) a(i)" ;;
    esac
    k=${wall[krm.$shape]}
    kc=${cpu[krm.$shape]}
    if [ "$have_gf" = 1 ]; then
        g=${wall[gf.$shape]}
        gc=${cpu[gf.$shape]}
        printf '%-5s %-29s %13s %15s %6s\n' "$shape" "$what" "$(rate "$k")" "$(rate "$g")" "$(ratio "$k" "$g")"
        printf '%-5s %-29s %13s %15s\n' "" "  best wall time" "$(seconds "$k")" "$(seconds "$g")"
        printf '%-5s %-29s %13s %15s %6s\n' "" "  best CPU time (user+sys)" "$(seconds "$kc")" "$(seconds "$gc")" \
            "$(ratio "$kc" "$gc")"
    else
        printf '%-5s %-29s %13s %15s %6s\n' "$shape" "$what" "$(rate "$k")" - -
        printf '%-5s %-29s %13s\n' "" "  best wall time" "$(seconds "$k")"
        printf '%-5s %-29s %13s\n' "" "  best CPU time (user+sys)" "$(seconds "$kc")"
    fi
done
echo "rates are values per best wall time; ratio = libkrm rate / gfortran rate (the CPU"
echo "line: gfortran CPU time / libkrm CPU time); above 1 means libkrm is faster"
}

status=0
bench_family "default INTEGERs"
use_family real
echo
bench_family "REAL(8) values"
if [ -x "$bin/cvt_real_bench" ]; then
    echo
    "$bin/cvt_real_bench" 1000000
fi


# Formatted WRITE to unit 11 in one statement: n default INTEGERs under
# (10I12), ten to a record, and n character values of 1 to 16 letters under
# (A), one to a record. Both peers must write the same file, byte for byte.
fkrm="$bin/formatted_write_krm"
fgf="$bin/formatted_write_gfortran"
if [ -x "$fkrm" ]; then
    echo
    echo "formatted WRITE of $n values to unit 11; best of $repeats whole-process runs"
    have_fgf=1
    [ -x "$fgf" ] || { have_fgf=0; echo "run_benchmarks: no gfortran peer ($fgf); libkrm alone" >&2; }
    declare -A fwall fcpu
    for shape in ints chars; do
        for ((r = 1; r <= repeats; r++)); do
            order="krm gf"
            if ((r % 2 == 0)); then order="gf krm"; fi
            for peer in $order; do
                if [ "$peer" = gf ] && [ "$have_fgf" = 0 ]; then continue; fi
                if [ "$peer" = krm ]; then prog=$fkrm; else prog=$fgf; fi
                run_once "$prog" "$shape"
                key=$peer.$shape
                if [ -z "${fwall[$key]:-}" ] || [ "$run_wall" -lt "${fwall[$key]}" ]; then fwall[$key]=$run_wall; fi
                if [ -z "${fcpu[$key]:-}" ] || [ "$run_cpu" -lt "${fcpu[$key]}" ]; then fcpu[$key]=$run_cpu; fi
                if [ "$r" -eq "$repeats" ]; then mv fort.11 "$peer.$shape.out"; fi
            done
        done
        records=$(wc -l <"krm.$shape.out")
        if [ "$have_fgf" = 1 ]; then
            if cmp -s "krm.$shape.out" "gf.$shape.out"; then
                echo "check $shape: the same $(stat -c %s "krm.$shape.out") bytes in $records records from both"
            else
                echo "FAIL: the files of $shape differ" >&2
                status=1
            fi
        else
            echo "check $shape: libkrm wrote $records records"
        fi
        rm -f ./*."$shape".out
    done
    echo
    printf '%-5s %-29s %13s %15s %6s\n' shape statement "libkrm val/s" "gfortran val/s" ratio
    for shape in ints chars; do
        case $shape in
            ints) what="write (11,'(10I12)') a" ;;
            chars) what="write (11,'(A)') c" ;;
        esac
        k=${fwall[krm.$shape]}
        kc=${fcpu[krm.$shape]}
        if [ "$have_fgf" = 1 ]; then
            g=${fwall[gf.$shape]}
            gc=${fcpu[gf.$shape]}
            printf '%-5s %-29s %13s %15s %6s\n' "$shape" "$what" "$(rate "$k")" "$(rate "$g")" "$(ratio "$k" "$g")"
            printf '%-5s %-29s %13s %15s\n' "" "  best wall time" "$(seconds "$k")" "$(seconds "$g")"
            printf '%-5s %-29s %13s %15s %6s\n' "" "  best CPU time (user+sys)" "$(seconds "$kc")" "$(seconds "$gc")" \
                "$(ratio "$kc" "$gc")"
        else
            printf '%-5s %-29s %13s %15s %6s\n' "$shape" "$what" "$(rate "$k")" - -
        fi
    done
fi

# Decimal conversion: REAL(16) to 36 significant digits against libquadmath's
# quadmath_snprintf, REAL(8) to 17 and 18 digits against glibc's snprintf, in
# one process that first checks both sides give the same digits.
# KRM_BENCH_DECIMAL_N sets the values per set (default 200000).
if [ -x "$bin/decimal_convert_bench" ]; then
    echo
    echo "decimal conversion, best of $repeats runs"
    "$bin/decimal_convert_bench" "${KRM_BENCH_DECIMAL_N:-200000}" "$repeats" || status=1
fi

# REAL(16) arithmetic: add, mul, div and sqrt against libgcc's __float128 and
# libquadmath's sqrtq, as nanoseconds per operation, in one process that
# first checks both sides give the same bits.
if [ -x "$bin/quad_bench" ]; then
    echo
    "$bin/quad_bench" || status=1
fi

# REAL(16) functions (sin, exp, log, pow, ...) against libquadmath, as
# nanoseconds per call on the same arguments, with the greatest difference
# of the two results in ulps as a guard.
if [ -x "$bin/quad_function_bench" ]; then
    echo
    "$bin/quad_function_bench" || status=1
fi
exit $status
