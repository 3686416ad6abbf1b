// One tile classified with a ring of buffer points around it: the tile's own records and the
// buffer's go into one LAS file of a work folder, the pipeline classifies that file whole, and
// only the tile's own records are kept, so that objects cut by the tile's edge are judged whole.
#pragma once

#include "Console.h"
#include "RunOptions.h"
#include "TileFiles.h"

#include <las/RecordStream.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace vx::app {

/// How every tile of a run is classified: the run's options and settings, quiet, and where the
/// library's messages go.
struct TileSettings {
    RunOptions run;
    std::vector<Setting> settings;
    PipelineOptions pipeline;
    LibraryOutput* libraryOutput = nullptr;
};

/// A folder for the temporary files of a run, removed with everything in it when the run ends.
class WorkFolder {
public:
    /// Makes a fresh folder named after the process inside `parent`.
    explicit WorkFolder(const std::filesystem::path& parent);
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

/// Appends to out the records of `from` whose plan position lies in rect, in the coordinate frame
/// of `frame` (scale and offset; re-encoded when they differ, records that do not fit dropped).
/// Returns how many were appended. Throws std::runtime_error when the point formats differ.
std::size_t appendRecordsWithin(vx::las::RecordWriter& out, const TileFile& from,
                                const vx::las::LasHeader& frame, const PlanRect& rect);

/// Classifies the LAS file `input` with the tile settings and writes it classified to `output`.
void classifyTileFile(const TileSettings& tiles, const std::string& input, const std::string& output);

/// Writes the first n records of `from` (with its header and VLRs) to `to`, LAS or LAZ by name.
void copyLeadingRecords(const std::string& from, std::size_t n, const std::string& to);

/// Width of the buffer ring in the file's units: metresGiven when not negative (--buffer), else
/// the plan reach of every step around a point: the widest window of the terrain step, which is
/// also wider than the seed columns and every neighbourhood search.
double bufferWidth(const vx::las::LasFile& headerFile, const RunOptions& run, double metresGiven);

/// The header and VLRs of a LAS or LAZ file without its points, as a LasFile of no records.
vx::las::LasFile headerFileOf(const std::string& path, const WorkFolder& work);

/// A line of progress a tile on standard error: tiles and points done, the rate and
/// the time left.
class TileProgress {
public:
    TileProgress(std::size_t tiles, uint64_t points, bool quiet, std::string prefix);
    void done(uint64_t points);
    /// The closing line.
    void finish();

private:
    void print(bool last);
    std::size_t tiles_, tilesDone_ = 0;
    uint64_t points_, pointsDone_ = 0;
    bool quiet_;
    std::string prefix_;
    double start_;
};

} // namespace vx::app
