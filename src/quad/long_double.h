// The software binary128 value inside the library.
//
// Two word orders meet here. The _Q primitives work in storage order (the
// krm_real16 of the public header: least significant word first), because
// that is how REAL(16) data lies in a program. A long_double object is in
// class order, most significant word first, so that a constant can be
// written top word first; every operator reverses the words, calls its
// primitive and reverses the result back.
//
// No primitive raises a floating-point flag. The rounding direction is read
// from the processor's control word when an operation needs it.
#pragma once

#include <stdint.h>

#include "krm/quad.h"

extern "C" {
void _Qadd(krm_real16 *result, const krm_real16 *a, const krm_real16 *b);
void _Qsub(krm_real16 *result, const krm_real16 *a, const krm_real16 *b);
void _Qmul(krm_real16 *result, const krm_real16 *a, const krm_real16 *b);
void _Qdiv(krm_real16 *result, const krm_real16 *a, const krm_real16 *b);
void _Qneg(krm_real16 *result, const krm_real16 *a);

// 1 or 0. A NaN is unequal to everything, itself included, and unordered.
int _Qeq(const krm_real16 *a, const krm_real16 *b);
int _Qne(const krm_real16 *a, const krm_real16 *b);
int _Qlt(const krm_real16 *a, const krm_real16 *b);
int _Qle(const krm_real16 *a, const krm_real16 *b);
int _Qgt(const krm_real16 *a, const krm_real16 *b);
int _Qge(const krm_real16 *a, const krm_real16 *b);

// Exact widenings.
void _Qdtoq(krm_real16 *result, const double *x);
void _Qitoq(krm_real16 *result, int x);
void _Qlltoq(krm_real16 *result, long long x);
void _Qulltoq(krm_real16 *result, unsigned long long x);

// Narrowings: to double in the current direction (subnormal doubles are
// truncated); to integers by truncation, out of range the pattern with only
// the top bit set.
double _Qqtod(const krm_real16 *a);
int _Qqtoi(const krm_real16 *a);
long long _Qqtoll(const krm_real16 *a);
unsigned long long _Qqtoull(const krm_real16 *a);
}

class long_double {
public:
    // Class order: word[0] holds the sign, the exponent and the top 16
    // fraction bits.
    uint32_t word[4];

    long_double() = default;
    // The words as given, top word first.
    long_double(unsigned w0, unsigned w1, unsigned w2, unsigned w3) : word{w0, w1, w2, w3} {}
    long_double(int x) { krm_real16 s; _Qitoq(&s, x); from_storage(s); }
    long_double(long long x) { krm_real16 s; _Qlltoq(&s, x); from_storage(s); }
    long_double(unsigned long long x) { krm_real16 s; _Qulltoq(&s, x); from_storage(s); }
    long_double(double x) { krm_real16 s; _Qdtoq(&s, &x); from_storage(s); }

    // Explicit, so that mixed expressions such as x + 1 or x < 0.5 take the
    // long_double operators and never go through double.
    explicit operator int() const { krm_real16 s = storage(); return _Qqtoi(&s); }
    explicit operator long long() const { krm_real16 s = storage(); return _Qqtoll(&s); }
    explicit operator unsigned long long() const { krm_real16 s = storage(); return _Qqtoull(&s); }
    explicit operator double() const { krm_real16 s = storage(); return _Qqtod(&s); }

    long_double &operator+=(const long_double &b) { return apply(_Qadd, b); }
    long_double &operator-=(const long_double &b) { return apply(_Qsub, b); }
    long_double &operator*=(const long_double &b) { return apply(_Qmul, b); }
    long_double &operator/=(const long_double &b) { return apply(_Qdiv, b); }

    long_double operator-() const {
        krm_real16 s = storage(), r;
        _Qneg(&r, &s);
        return of_storage(r);
    }

    // Crossing between the orders: the words reversed.
    krm_real16 storage() const {
        krm_real16 s;
        s.word[0] = word[3];
        s.word[1] = word[2];
        s.word[2] = word[1];
        s.word[3] = word[0];
        return s;
    }
    void from_storage(const krm_real16 &s) {
        word[0] = s.word[3];
        word[1] = s.word[2];
        word[2] = s.word[1];
        word[3] = s.word[0];
    }
    static long_double of_storage(const krm_real16 &s) {
        long_double x;
        x.from_storage(s);
        return x;
    }

private:
    long_double &apply(void (*op)(krm_real16 *, const krm_real16 *, const krm_real16 *),
                       const long_double &b) {
        krm_real16 sa = storage(), sb = b.storage(), r;
        op(&r, &sa, &sb);
        from_storage(r);
        return *this;
    }
};

inline long_double operator+(const long_double &a, const long_double &b) { long_double r = a; return r += b; }
inline long_double operator-(const long_double &a, const long_double &b) { long_double r = a; return r -= b; }
inline long_double operator*(const long_double &a, const long_double &b) { long_double r = a; return r *= b; }
inline long_double operator/(const long_double &a, const long_double &b) { long_double r = a; return r /= b; }

inline bool operator==(const long_double &a, const long_double &b) {
    krm_real16 sa = a.storage(), sb = b.storage();
    return _Qeq(&sa, &sb) != 0;
}
inline bool operator!=(const long_double &a, const long_double &b) {
    krm_real16 sa = a.storage(), sb = b.storage();
    return _Qne(&sa, &sb) != 0;
}
inline bool operator<(const long_double &a, const long_double &b) {
    krm_real16 sa = a.storage(), sb = b.storage();
    return _Qlt(&sa, &sb) != 0;
}
inline bool operator<=(const long_double &a, const long_double &b) {
    krm_real16 sa = a.storage(), sb = b.storage();
    return _Qle(&sa, &sb) != 0;
}
inline bool operator>(const long_double &a, const long_double &b) {
    krm_real16 sa = a.storage(), sb = b.storage();
    return _Qgt(&sa, &sb) != 0;
}
inline bool operator>=(const long_double &a, const long_double &b) {
    krm_real16 sa = a.storage(), sb = b.storage();
    return _Qge(&sa, &sb) != 0;
}

// Correctly rounded square root.
long_double sqrtl(const long_double &x);

// Round to an integral value in the current direction; a zero keeps x's sign.
long_double rintl(const long_double &x);
// AINT and ANINT: towards zero, and to nearest with ties away from zero.
long_double aintl(const long_double &x);
long_double anintl(const long_double &x);
// NINT: ANINT converted to an integer; out of range, and for NaNs, the
// integer with only its top bit set.
int nintl(const long_double &x);
long long llnintl(const long_double &x);
// The exact remainder of x / p with x's sign; a zero p or an infinite x gives
// a NaN.
long_double fmodl(const long_double &x, const long_double &p);
// MODULO: the remainder with p's sign.
long_double modulol(const long_double &a, const long_double &p);
