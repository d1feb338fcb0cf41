#pragma once

/// \file
/// Declares every class of the library but the exceptions of its formats, for headers that only name them.

#include "FCurveLib/Export.h"

#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

class Exception;
class PropertyMap;
template<class T>
class SharedFromThis;
template<class T>
struct Vector2D;
template<class T>
struct Rectangle;
template<class Projection, class Iterator>
class ProjectionIterator;

class Keyframe;
class Segment;
class Tangent;
class FCurve;
class FCurveContainer;

class TrackedObserver;
class FCurveObserver;
class ContainerObserver;

class Interpolator;
class InterpolatorFactory;
class InterpMaker;
class FallbackExpressionParser;
class DefaultFallbackParser;
class NumberInterp;
class UnknownExpression;
class Constant;
class ConstantNext;
class Linear;
class BezierInterpBase;
class Bezier;
class Spline;
class Ease;
class EaseIn;
class EaseOut;
class Match;
class MatchIn;
class MatchOut;
class Cycle;
class CycleOffset;
class Mirror;

class CurveOverview;
class ObservedOverview;
struct CurveView;
struct ViewPolyline;

class CompiledCurve;
class CompiledSet;

class Stream;
class MemoryStream;
class File;
class FileStream;
class ArrayStreamAdaptor;
template<class T, int N>
class Array;
template<int N>
class ArrayStream;
class Stream_streambuf;
class Stream_iostream;
class SafeFileSave;
class FileReplacement;
class FileError;
class LoadError;
class SaveError;
class DynamicBinaryPolicy;
class LittleEndianBinaryPolicy;
class BigEndianBinaryPolicy;
class SwapBinaryPolicy;
class NoSwapBinaryPolicy;
template<class Policy>
class BinaryIO;
class IFFType;
template<class Policy>
class IFFWriter;
template<class Policy>
class IFFReader;

class UnknownFormat;
class FormatError;
struct FormatLimits;
class FormatType;
class FormatInterface;
class FCurveFormatInterface;
class ContainerInterface;
class FormatFactory;
template<class T>
class FCURVELIB_API SimpleListNode;
class Reader;
class Writer;
struct SaveOptions;
struct LoadOptions;
class Cancelled;
class ExceptionFormatter;
namespace TovConversion {
class TovKey;
class TovCurve;
} // namespace TovConversion
namespace BinaryFormat {
class BinaryReader;
class BinaryWriter;
} // namespace BinaryFormat
namespace HoudiniClipFormat {
class HoudiniClipReader;
}
namespace OldFormat {
class OldReader;
}
namespace TextFormat {
class TextReader;
}
namespace HoudiniChanFormat {
class HoudiniChanReader;
}
namespace XMLFormat {
class XMLReader;
class XMLWriter;
} // namespace XMLFormat

// Exported here already: a compiler may settle the visibility of a template's instances before it sees the definition.
namespace Private {
struct FCURVELIB_API MutableParts;
struct FCURVELIB_API ConstParts;
} // namespace Private
template<class Parts>
class FCURVELIB_API BasicHitRecord;
template<class Parts>
class FCURVELIB_API BasicHitRecordIterator;
template<class Curve>
class FCURVELIB_API BasicKeyView;
template<class Curve>
class FCURVELIB_API BasicKeyRange;
template<class Filter, class Iterator>
class FilterIterator;
using HitRecord = BasicHitRecord<Private::MutableParts>;
using ConstHitRecord = BasicHitRecord<Private::ConstParts>;
using HitRecordIterator = BasicHitRecordIterator<Private::MutableParts>;
using ConstHitRecordIterator = BasicHitRecordIterator<Private::ConstParts>;
struct CompareRecord;
class Selection;
class SelectionObserver;
template<class T>
class Examined;
class SelectionExaminer;
class SelectionSnapshot;
class KeyGroup;
struct MoveOptions;
struct MoveReport;
class KeyClip;
struct PasteOptions;
struct PasteReport;

struct CurveEdit;
struct EditSummary;
class EditObserver;
class EditGroup;
class UndoStack;

enum SmoothFilter : std::uint32_t;
enum FlipType : std::int32_t;
enum RotationOrder : std::uint8_t;
struct TransformResult;
struct KeyframeInsertion;
struct EditSettings;
struct KeySetting;
struct PartDifference;
struct CurveDifference;
struct DiffOptions;
struct DrawnCurve;
struct DrawOptions;
class BadPictureSize;
struct FitOptions;
struct FitReport;
struct FitResult;
struct CombineReport;
struct CombineResult;

namespace Private {
struct Read;
struct Raw;
struct Block;
class BorrowedSegment;
struct CurveLink;
class Recorder;
struct KeyframeContents;
struct SegmentContents;
struct TangentContents;
class EditHistory;
class EditProofWalk;
class GroupPlan;
class SegmentSummaries;
class SelectionState;
class Subscription;
class SegmentMap;
class SegmentMapIterator;
class PlaybackBlock;
struct PlaybackCurve;
} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
