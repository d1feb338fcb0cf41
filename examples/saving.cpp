// How do I save and load files, with progress, a cancel button, and words for what went wrong?
//
// SaveCurves and LoadCurves are all or nothing. The callbacks run in the thread that saves; an error says which file
// holds what now. FileReplacement saves documents of the host's own in the same way.

#include <FCurveLib/FCurveLib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>

using namespace VEM_FN::FCurveLib;

// Any exception of the library, in words.
std::string inWords(const char* path) {
    ExceptionFormatter::LibraryFormatter library(path);
    ExceptionFormatter messages;
    messages.addFormatter(library);
    std::ostringstream text;
    messages.formatException(text);
    return text.str();
}

bool save(const FCurveContainer& shot, const char* path, const bool& cancelButton) {
    SaveOptions options;
    options.progress = [](double share) { std::printf("%3.0f %%\r", 100.0 * share); };
    options.cancelled = [&cancelButton] { return cancelButton; };
    try {
        SaveCurves(path, shot, nullptr, options);
        return true;
    } catch (const Cancelled&) {
        return false; // as the user wished; the old file is there
    } catch (const SaveError& error) {
        std::printf("%s\n", inWords(error.path()).c_str());
        if (*error.workingPath()) std::printf("Recover it from %s\n", error.workingPath());
        return false;
    } catch (const Exception&) { // curves that the format cannot hold, an unknown format
        std::printf("%s\n", inWords(path).c_str());
        return false;
    }
}

int main() {
    const auto shot = FCurveContainer::create();
    const auto curve = FCurve::create();
    curve->setName("height");
    for (int x = 0; x < 20000; ++x)
        curve->insertSegment(*Keyframe::create(x, 0.5 * x), InterpolatorFactory::create("linear()"));
    shot->addCurve(curve);

    const std::string path = (std::filesystem::temp_directory_path() / "shot.fcrvb").string();
    bool cancelButton = false;
    bool right = save(*shot, path.c_str(), cancelButton);
    shot->clear();
    cancelButton = true;
    right = !save(*shot, path.c_str(), cancelButton) && right;
    cancelButton = false;
    right = !save(*shot, "/no/such/folder/shot.fcrvb", cancelButton) && right;

    // What was saved first is still there.
    const FormatType format = LoadCurves(path.c_str(), *shot);
    std::printf("%zu curve read from %s\n", shot->size(), format.getTitle());
    right = shot->size() == 1 && shot->begin()->eval(10000.0) == 5000.0 && right;

    // A document of the host's own.
    const std::string notes = "{\"take\": 3}\n";
    FileReplacement file((path + ".json").c_str());
    file.getStream().writeData(notes.data(), static_cast<int>(notes.size()));
    file.finish(); // without it, an older file stays
    right = LoadFile((path + ".json").c_str()).getSize() == static_cast<int>(notes.size()) && right;

    std::filesystem::remove(path);
    std::filesystem::remove(path + ".json");
    return right ? EXIT_SUCCESS : EXIT_FAILURE;
}
