// The arithmetic of compiled curves, one text for all processors: included by ScalarLanes.h with one double a lane and
// by SimdLanes.cpp once for each of Highway's targets. The including namespace says what Tag, V (values), M (masks) and
// the operations on them are.
//
// Every lane goes the same way whatever its neighbours do, through + - * / and the square root alone, which IEEE 754
// rounds in one way: so all processors give the same bits. Deliberate: no fused multiply-add, and no minimum or
// maximum, which treat NaN as the processor likes.
//
// No include guard, deliberately.

// Householder's step of third order for f(s) = ((A s + B) s + C) s - offset, which multiplies the correct digits by
// four.
inline V StepLanes(Tag d, V A, V B, V C, V offset, V s, V& f) {
    const V two = Set(d, 2.0);
    const V A3 = Set(d, 3.0) * A * s;
    f = ((A * s + B) * s + C) * s - offset;
    const V f1 = (A3 + two * B) * s + C;
    const V f2 = A3 + B; // half of it
    const V f1f1 = f1 * f1;
    const V ff2 = f * f2;
    return s - f * (f1f1 - ff2) / (f1 * (f1f1 - two * ff2) + f * f * A);
}

// The parameter s in [0, 9/16] at the given offset from the nearer key, where the keys are width apart and the handles
// have the lengths near and far: f(s) = 0. Lanes that are done already hold anything.
//
// The start solves the quadratic that has 0.45 s^2 in place of s^3. Two steps are enough for most curves. Where they
// are not, they begin again with a bracket: a step that leaves it becomes a bisection. No curve that is not steep, see
// Compile.cpp, takes more than five.
inline V SolveLanes(Tag d, V width, V near, V far, V offset, M done) {
    const V zero = Set(d, 0.0);
    const V two = Set(d, 2.0);
    const V three = Set(d, 3.0);
    const V A = three * (near + far) - two * width;
    const V B = three * (width - far) - Set(d, 6.0) * near;
    const V C = three * near;
    V low = zero;
    V high = Set(d, 0.5625); // more than 1/2: rounding may have misjudged which key is nearer

    V radicand = C * C + Set(d, 4.0) * (B + Set(d, 0.45) * A) * offset;
    radicand = IfThenElse(radicand > zero, radicand, zero);
    V start = two * offset / (C + Sqrt(radicand));
    start = IfThenElse(start < high, start, high);

    const V small = Set(d, 0x1p-14); // a step of this size leaves an error of its fourth power
    V f = zero;
    const V first = StepLanes(d, A, B, C, offset, start, f);
    V s = StepLanes(d, A, B, C, offset, first, f);
    done = Or(done, And(Abs(s - first) <= small * s, s <= high));
    if (AllTrue(d, done)) return s;

    s = IfThenElse(done, s, start);
    constexpr int maxSteps = 16;
    for (int step = 0; step < maxSteps && !AllTrue(d, done); ++step) {
        V next = StepLanes(d, A, B, C, offset, s, f);
        low = IfThenElse(f > zero, low, s);
        high = IfThenElse(f > zero, s, high);
        next = IfThenElse(And(next >= low, next <= high), next, low + (high - low) * Set(d, 0.5));
        const V moved = Abs(next - s);
        s = IfThenElse(done, s, next);
        done = Or(done, moved <= small * next);
    }
    return s;
}

// The value at s, which counts from the nearer key: as the model's BezierY Bernstein's form on offsets from there, so
// that flat is flat and keys are keys. The other key, and the handles' heights.
inline V ValueLanes(Tag d, V s, V y, V otherY, V handle, V otherHandle) {
    const V three = Set(d, 3.0);
    const V r = Set(d, 1.0) - s;
    const V rise = otherY - y;
    return y + ((three * r * (rise + otherHandle) + s * rise) * s + three * r * r * handle) * s;
}

// x(1/2) of a curve that is not even, from the left key.
inline V MiddleLanes(Tag d, V width, V outX, V inX) {
    return Set(d, 0.125) * (Set(d, 3.0) * (outX + (width + inX)) + width);
}

// The value at x, which lies between the keys of its piece; the pieces are not free. EvalPiece does the same for one x.
inline V EvalLanes(Tag d, V x, V x0, V y0, V x3, V y3, V outX, V outY, V inX, V inY) {
    const V zero = Set(d, 0.0);
    const V width = x3 - x0;
    const V left = x - x0;
    const M even = inX > zero;
    const M right = left > IfThenElse(even, Set(d, 0.5) * width, MiddleLanes(d, width, outX, inX));
    const V offset = IfThenElse(right, x3 - x, left);
    const M atKey = offset <= IfThenElse(even, outX, Set(d, GetEpsilon()));

    V s = offset / width;
    const M settled = Or(even, atKey);
    if (!AllTrue(d, settled)) {
        const V in = zero - inX;
        s = IfThenElse(even, s,
                       SolveLanes(d, width, IfThenElse(right, in, outX), IfThenElse(right, outX, in), offset, settled));
    }
    s = IfThenElse(atKey, zero, s);
    return ValueLanes(d, s, IfThenElse(right, y3, y0), IfThenElse(right, y0, y3), IfThenElse(right, inY, outY),
                      IfThenElse(right, outY, inY));
}

// Values at x[0], x[1] ... as long as these lie in the piece, which is not free and holds the first of them. Returns
// how many there were. y may be x.
inline std::size_t EvalRun(const Piece& piece, const double* x, double* y, std::size_t n) {
    const Tag d;
    const V x0 = Set(d, piece.x0);
    const V y0 = Set(d, piece.y0);
    const V x3 = Set(d, piece.x3);
    const V y3 = Set(d, piece.y3);
    const V outX = Set(d, piece.outX);
    const V outY = Set(d, piece.outY);
    const V inX = Set(d, piece.inX);
    const V inY = Set(d, piece.inY);
    const std::size_t width = Lanes(d);

    std::size_t i = 0;
    for (; i + width <= n; i += width) {
        const V at = LoadU(d, x + i);
        if (!AllTrue(d, And(at >= x0, at < x3))) break;
        StoreU(EvalLanes(d, at, x0, y0, x3, y3, outX, outY, inX, inY), d, y + i);
    }
    std::size_t rest = 0;
    while (rest < width && i + rest < n && x[i + rest] >= piece.x0 && x[i + rest] < piece.x3) ++rest;
    if (rest > 0) {
        alignas(64) double buffer[kMaxLanes];
        for (std::size_t lane = 0; lane < width; ++lane) buffer[lane] = x[i + (lane < rest ? lane : 0)];
        StoreU(EvalLanes(d, LoadU(d, buffer), x0, y0, x3, y3, outX, outY, inX, inY), d, buffer);
        for (std::size_t lane = 0; lane < rest; ++lane) y[i + lane] = buffer[lane];
    }
    return i + rest;
}

// Values of gathered pieces, each at its own x. Precondition: filled to this width.
inline void EvalGathered(const Gathered& gathered, double* y) {
    const Tag d;
    for (std::size_t i = 0; i < gathered.count; i += Lanes(d))
        StoreU(EvalLanes(d, LoadU(d, gathered.x + i), LoadU(d, gathered.x0 + i), LoadU(d, gathered.y0 + i),
                         LoadU(d, gathered.x3 + i), LoadU(d, gathered.y3 + i), LoadU(d, gathered.outX + i),
                         LoadU(d, gathered.outY + i), LoadU(d, gathered.inX + i), LoadU(d, gathered.inY + i)),
               d, y + i);
}
