"""Curves for hypothesis: any number of keys, kinds, tangent types, flags and properties."""

import fcurvelib as fc
from hypothesis import strategies as st

numbers = st.floats(-1e6, 1e6, allow_nan=False).map(lambda number: number + 0.0)
kinds = st.sampled_from(fc.kinds() + ["2.5", "sin(x/10)", "x**2 % 7"])
texts = st.text(st.characters(blacklist_characters="\0", blacklist_categories=("Cs",)), max_size=8)
tangent_types = st.sampled_from(["fixed", "flat", "linear", "smooth", "smooth_continued", "clamped", "plateau"])


@st.composite
def curves(draw):
    curve = fc.Curve(draw(texts))
    for frame in sorted(draw(st.sets(st.integers(-10_000, 10_000), max_size=6))):
        key = curve.add_key(frame / 8, draw(numbers), interpolator=draw(kinds), breakdown=draw(st.booleans()))
        key.unified = draw(st.booleans())
        for tangent in (key.in_tangent, key.out_tangent):
            tangent.weighted = draw(st.booleans())
            tangent.handle = draw(st.floats(0, 50)) * (-1 if tangent.is_in else 1), draw(numbers)
            tangent.type = draw(tangent_types)
        for part in (key, key.right_segment, key.in_tangent):
            part.properties = draw(st.dictionaries(st.sampled_from(["a", "fc_sel", "ü"]), texts.filter(bool)))
    curve.extend = (draw(kinds), draw(kinds)) if curve.keys else draw(kinds)
    curve.properties = draw(st.dictionaries(texts.filter(bool), texts.filter(bool), max_size=3))
    return curve
