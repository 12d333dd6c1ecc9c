// SPDX-License-Identifier: MIT
#include "geometry/SineCosine.h"

#include <utility>

namespace tavrix {
namespace {

// An unevaluated sum of two doubles, about 106 bits: high is the double nearest to the sum.
// Error-free sums and products after Dekker (1971) and Knuth (1969), without fused multiply-add.
struct Pair {
    double high;
    double low;
};

// |a| >= |b|, or a is 0.
Pair QuickSum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

Pair Sum(double a, double b) {
    const double sum = a + b, part = sum - a;
    return {sum, (a - (sum - part)) + (b - part)};
}

Pair Split(double a) {
    constexpr double kSplitter = 134217729;  // 2^27 + 1
    const double scaled = kSplitter * a, high = scaled - (scaled - a);
    return {high, a - high};
}

Pair Product(double a, double b) {
    const double product = a * b;
    const Pair x = Split(a), y = Split(b);
    return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
}

Pair operator+(Pair a, Pair b) {
    const Pair high = Sum(a.high, b.high), low = Sum(a.low, b.low);
    const Pair sum = QuickSum(high.high, high.low + low.high);
    return QuickSum(sum.high, sum.low + low.low);
}

Pair operator-(Pair a) {
    return {-a.high, -a.low};
}

Pair operator*(Pair a, Pair b) {
    const Pair product = Product(a.high, b.high);
    return QuickSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

Pair operator/(Pair a, double b) {
    const double quotient = a.high / b;
    const Pair product = Product(quotient, b);
    return QuickSum(quotient, ((a.high - product.high) - product.low + a.low) / b);
}

constexpr int kTerms = 14;  // of the series: below 2^-107 of the sum at an eighth of a turn
constexpr Pair kOne = {1, 0};

// 1 - s / (k (k + 1)) (1 - s / ((k + 2) (k + 3)) (1 - ...)), s the angle's square.
Pair Series(Pair square, int k) {
    Pair sum = kOne;
    for (int n = k + 2 * (kTerms - 1); n >= k; n -= 2) sum = kOne + -(square * sum / (n * (n + 1)));
    return sum;
}

// What is left of the angle, at most an eighth of a turn either way, after so many quarter turns. A multiple
// of the first two parts of a quarter turn is exact: they have 33 bits.
Pair Reduced(double radians, int quarters) {
    constexpr double kQuarterTurn[] = {0x1.921fb544p+0, 0x1.0b4611a6p-34, 0x1.3198a2e037073p-69,
                                       0x1.129024e088a68p-123};
    Pair rest = Sum(radians, -quarters * kQuarterTurn[0]);
    for (int i = 1; i < 4; ++i) rest = rest + -Product(quarters, kQuarterTurn[i]);
    return rest;
}

}  // namespace

SineCosine SineCosineOf(double radians) {
    constexpr double kQuartersPerRadian = 0.6366197723675814;  // 2 / pi
    const int quarters = static_cast<int>(radians * kQuartersPerRadian + 0.5);
    const Pair rest = Reduced(radians, quarters), square = rest * rest;
    double sine = (rest * Series(square, 2)).high, cosine = Series(square, 1).high;
    if (quarters % 2 != 0) std::swap(sine, cosine);
    const bool negatesSine = quarters % 4 >= 2, negatesCosine = quarters % 4 == 1 || quarters % 4 == 2;
    return {negatesSine ? -sine : sine, negatesCosine ? -cosine : cosine};
}

}  // namespace tavrix
