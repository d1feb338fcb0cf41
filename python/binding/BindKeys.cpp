#include "Binding.h"

#include "FCurveLib/IndexLookup.h"

#include <vector>

namespace FCurvePython {

namespace {

// Views of a curve, which they keep. Numbers of parts are int in the library.
struct Keys {
    CurvePtr curve;
    std::size_t size() const noexcept { return curve->size() - 1; }
    KeyPtr at(std::size_t index) const { return GetIndexedKeyframe(*curve, static_cast<int>(index)); }
};

struct Segments {
    CurvePtr curve;
    std::size_t size() const noexcept { return curve->size(); }
    SegmentPtr at(std::size_t index) const { return GetIndexedSegment(*curve, static_cast<int>(index)); }
};

struct Interpolators {
    CurvePtr curve;
    std::size_t size() const noexcept { return curve->size(); }
    InterpolatorPtr at(std::size_t index) const {
        return GetIndexedSegment(*curve, static_cast<int>(index))->getInterpolator();
    }
};

// Walks on from the last key's place, so that keys may come and go on the way.
struct KeyIterator {
    CurvePtr curve;
    KeyPtr last;
    double x = 0.0;

    KeyPtr next() {
        if (!last) {
            last = FirstSegment(*curve).getRightKey();
        } else {
            const SegmentPtr segment = last->getRightSegment();
            const bool inCurve = segment && segment->getOwningCurve() == curve;
            last = inCurve ? segment->getRightKey() : curve->findSegment(x)->getRightKey();
        }
        if (!last) {
            curve.reset();
            throw py::stop_iteration();
        }
        x = last->getX();
        return last;
    }
};

struct SliceNumbers {
    SliceNumbers(const py::slice& slice, std::size_t size) {
        if (!slice.compute(static_cast<py::ssize_t>(size), &start, &stop, &step, &length))
            throw py::error_already_set();
    }
    std::size_t operator[](py::ssize_t i) const { return static_cast<std::size_t>(start + i * step); }
    py::ssize_t start = 0;
    py::ssize_t stop = 0;
    py::ssize_t step = 1;
    py::ssize_t length = 0;
};

template<class View>
py::list Slice(const View& view, const py::slice& of) {
    const SliceNumbers numbers(of, view.size());
    py::list parts;
    for (py::ssize_t i = 0; i < numbers.length; ++i) parts.append(view.at(numbers[i]));
    return parts;
}

template<class View>
void BindView(py::class_<View>& python) {
    python.def("__len__", &View::size)
        .def(
            "__getitem__", [](const View& self, py::ssize_t index) { return self.at(Place(index, self.size())); },
            py::arg("index"))
        .def("__getitem__", &Slice<View>, py::arg("slice"));
}

void DeleteSlice(const Keys& keys, const py::slice& of) {
    const py::list parts = Slice(keys, of);
    for (const auto part : parts) {
        auto& key = py::cast<Keyframe&>(part);
        if (key.getOwningCurve() == keys.curve) RemoveKey(*keys.curve, key); // else an observer did
    }
}

// One interpolator for all segments of the slice, or a sequence of as many.
void SetSlice(const Interpolators& self, const py::slice& of, py::handle source) {
    const SliceNumbers numbers(of, self.size());
    std::vector<InterpolatorPtr> made;
    if (py::isinstance<py::list>(source) || py::isinstance<py::tuple>(source)
        || py::isinstance<Interpolators>(source)) {
        for (const auto item : source) made.push_back(ToInterpolator(item));
        if (made.size() != static_cast<std::size_t>(numbers.length))
            throw py::value_error("Expected " + std::to_string(numbers.length) + " interpolators, found "
                                  + std::to_string(made.size()));
    } else {
        made.assign(static_cast<std::size_t>(numbers.length), ToInterpolator(source));
    }
    std::vector<SegmentPtr> segments(made.size()); // before observers come and edit
    auto position = self.curve->begin();
    std::size_t at = 0;
    for (std::size_t i = 0; i < segments.size(); ++i) { // from left to right, whatever the slice's direction
        const std::size_t place = numbers.step > 0 ? i : segments.size() - 1 - i;
        for (const std::size_t wanted = numbers[static_cast<py::ssize_t>(place)]; at < wanted; ++at) ++position;
        segments[place] = position->getShared();
    }
    for (std::size_t i = 0; i < segments.size(); ++i) segments[i]->setInterpolator(made[i]);
}

// One for all segments between keys, or as many as there are segments.
void SetAll(const CurvePtr& curve, py::handle source) {
    const bool many =
        py::isinstance<py::list>(source) || py::isinstance<py::tuple>(source) || py::isinstance<Interpolators>(source);
    const auto size = static_cast<py::ssize_t>(curve->size());
    SetSlice({curve}, many ? py::slice(0, size, 1) : py::slice(1, std::max<py::ssize_t>(size - 1, 1), 1), source);
}

template<class Sequence>
py::str DescribeSequence(const Sequence& self) {
    return py::repr(py::list(py::cast(self)));
}

} // namespace

void BindKeys(py::module_& module, CurveClass& curve) {
    py::class_<KeyIterator>(module, "_KeyIterator")
        .def("__iter__", [](const py::object& self) { return self; })
        .def("__next__", [](KeyIterator& self) {
            if (!self.curve) throw py::stop_iteration();
            return self.next();
        });

    py::class_<Keys> keys(module, "Keys",
                          "The keys of a curve, as a sequence in the order of x. Slices give lists. Keys may be added\n"
                          "and removed while it is walked over.");
    BindView(keys);
    keys.def("__iter__",
             [](const Keys& self) {
                 return KeyIterator{self.curve, nullptr};
             })
        .def("__delitem__", Editing([](const Keys& self, py::ssize_t index) {
                 RemoveKey(*self.curve, *self.at(Place(index, self.size())));
             }),
             py::arg("index"))
        .def("__delitem__", Editing(&DeleteSlice), py::arg("slice"))
        .def("__contains__",
             [](const Keys& self, py::handle key) {
                 return py::isinstance<Keyframe>(key) && py::cast<Keyframe&>(key).getOwningCurve() == self.curve;
             })
        .def("__repr__", &DescribeSequence<Keys>);

    py::class_<Segments> segments(
        module, "Segments",
        "The segments of a curve, one more than keys: before the first key, between them, and\n"
        "after the last one.");
    BindView(segments);
    segments.def("__repr__", &DescribeSequence<Segments>);

    py::class_<Interpolators> interpolators(
        module, "Interpolators",
        "The interpolators of a curve's segments. Set an element, or a slice to one or to as many.");
    BindView(interpolators);
    interpolators
        .def("__setitem__", Editing([](const Interpolators& self, py::ssize_t index, py::handle source) {
                 GetIndexedSegment(*self.curve, static_cast<int>(Place(index, self.size())))
                     ->setInterpolator(ToInterpolator(source));
             }),
             py::arg("index"), py::arg("interpolator"))
        .def("__setitem__", Editing(&SetSlice), py::arg("slice"), py::arg("interpolators"))
        .def("__repr__", &DescribeSequence<Interpolators>);

    curve
        .def_property_readonly(
            "keys", [](const CurvePtr& self) { return Keys{self}; }, "The keys, as a sequence.")
        .def_property_readonly(
            "segments", [](const CurvePtr& self) { return Segments{self}; },
            "The segments, as a sequence: one more than keys.")
        .def_property(
            "interpolators", [](const CurvePtr& self) { return Interpolators{self}; }, Editing(&SetAll),
            "The interpolators of the segments, as a sequence. Set it to one for all segments between keys, or to a\n"
            "list of one for every segment.");
}

} // namespace FCurvePython
