"""Shared pieces of the generators of the REAL(16) function tables: binary128
words of a number, long_double literals, high and low pairs, and polynomial
fits close to minimax.

Needs mpmath (Debian: python3-mpmath). The generators' output is committed,
so that the build never runs them."""
import mpmath

mpmath.mp.prec = 400

BIAS = 16383


def words(x):
    """The four 32-bit words of x rounded to binary128 (to nearest, ties to
    even), top word first: the order of a long_double constant."""
    x = mpmath.mpf(x)
    if x == 0:
        return [0x80000000 if mpmath.sign(x) < 0 else 0, 0, 0, 0]
    sign = 1 if x < 0 else 0
    m, e = mpmath.frexp(abs(x))  # m in [0.5, 1)
    e -= 1  # x = 1.f * 2^e
    if e < -16382:  # subnormal: a fixed quantum of 2^-16494
        n = int(mpmath.nint(abs(x) * mpmath.mpf(2) ** 16494))
        bits = n
        field = 0
        if n >> 112:
            field, bits = 1, n - (1 << 112)
    else:
        n = int(mpmath.nint(m * mpmath.mpf(2) ** 113))  # 113 bits, ties to even
        if n >> 113:
            n >>= 1
            e += 1
        field = e + BIAS
        bits = n - (1 << 112)
    if field >= 0x7FFF:
        raise ValueError("overflows binary128")
    v = (sign << 127) | (field << 112) | bits
    return [(v >> 96) & 0xFFFFFFFF, (v >> 64) & 0xFFFFFFFF, (v >> 32) & 0xFFFFFFFF, v & 0xFFFFFFFF]


def value(w):
    """The number that the four words (top first) stand for."""
    v = (w[0] << 96) | (w[1] << 64) | (w[2] << 32) | w[3]
    sign = -1 if v >> 127 else 1
    field = (v >> 112) & 0x7FFF
    frac = v & ((1 << 112) - 1)
    if field == 0:
        return sign * mpmath.mpf(frac) * mpmath.mpf(2) ** -16494
    return sign * mpmath.mpf((1 << 112) | frac) * mpmath.mpf(2) ** (field - BIAS - 112)


def rounded(x):
    """x rounded to binary128."""
    return value(words(x))


def literal(x):
    """A long_double constructor for x rounded to binary128."""
    return "long_double(0x%08Xu, 0x%08Xu, 0x%08Xu, 0x%08Xu)" % tuple(words(x))


def hi_lo(x):
    """x as the sum of two binary128 numbers, the low one under half an ulp of
    the high one."""
    hi = rounded(x)
    return hi, rounded(x - hi)


def fit(g, a, b, degree, points=None, relative=True):
    """Coefficients c[0..degree] of a polynomial in t close to the minimax
    approximation of g on [a, b]: a least-squares fit over Chebyshev points,
    weighted by 1/|g| for relative error, which comes within a small factor
    of minimax for the smooth functions fitted here. The coefficients are
    returned exact (not yet rounded)."""
    a, b = mpmath.mpf(a), mpmath.mpf(b)
    n = points or 4 * (degree + 1)
    ts = [(a + b) / 2 + (b - a) / 2 * mpmath.cos(mpmath.pi * (k + mpmath.mpf(1) / 2) / n) for k in range(n)]
    rows, rhs = [], []
    for t in ts:
        gt = g(t)
        w = 1 / abs(gt) if relative and gt != 0 else 1
        rows.append([w * t ** j for j in range(degree + 1)])
        rhs.append(w * gt)
    A = mpmath.matrix(rows)
    y = mpmath.matrix(rhs)
    c = mpmath.lu_solve(A.T * A, A.T * y)
    return [c[j] for j in range(degree + 1)]


def horner(c, t):
    r = mpmath.mpf(0)
    for cj in reversed(c):
        r = r * t + cj
    return r


def max_error(g, c, a, b, samples=2000, relative=True):
    """The greatest error of the polynomial c against g over a dense grid of
    [a, b], relative to g unless told otherwise."""
    a, b = mpmath.mpf(a), mpmath.mpf(b)
    worst = mpmath.mpf(0)
    for k in range(samples + 1):
        t = a + (b - a) * k / samples
        gt = g(t)
        err = abs(horner(c, t) - gt)
        if relative and gt != 0:
            err /= abs(gt)
        worst = max(worst, err)
    return worst


def emit_constants(names_values, indent="const "):
    """Lines defining named long_double constants, one a line."""
    return ["%slong_double %s = %s;" % (indent, n, literal(v)) for n, v in names_values]


def emit_table(name, values, per_line=1):
    """A table of long_double rows as a C++ array initialiser, a row a line."""
    lines = ["const long_double %s[%d] = {" % (name, len(values))]
    for v in values:
        lines.append("    %s," % literal(v))
    lines.append("};")
    return lines
