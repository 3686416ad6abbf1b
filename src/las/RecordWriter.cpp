// Writing point records in batches to a staged file: LAS records go out through a bounded buffer,
// LAZ records through LASzip; counts and bounds are tallied on the way and stored at the end.
#include "LazCodec.h"
#include "StagedFile.h"
#include "las/RecordStream.h"

namespace vx::las {

namespace {

/// Bytes gathered before a LAS write goes to the file.
constexpr std::size_t kWriteBuffer = 1 << 20;

} // namespace

struct RecordWriter::State {
    std::string path;
    std::vector<uint8_t> preamble;
    LasHeader header;
    detail::RecordTally tally;
    std::unique_ptr<detail::StagedFile> file;
    std::unique_ptr<detail::LazEncoder> laz;
    std::vector<uint8_t> buffer;
    bool finished = false;

    void flush()
    {
        file->append(buffer.data(), buffer.size());
        buffer.clear();
    }
};

RecordWriter::RecordWriter(const std::string& path, const std::vector<uint8_t>& preamble)
    : state_(std::make_unique<State>())
{
    State& s = *state_;
    s.path = path;
    s.header = detail::parseHeader(preamble.data(), preamble.size(), path + " (preamble)", false);
    const std::vector<LasVlr> vlrs =
        detail::checkLayout(preamble.data(), preamble.size(), preamble.size(), s.header, path + " (preamble)",
                            detail::PointData::Absent);
    if (preamble.size() != s.header.offsetToPointData)
        detail::fail(path, "the preamble holds " + std::to_string(preamble.size()) +
                               " bytes but its header puts the points at offset " +
                               std::to_string(s.header.offsetToPointData));
    s.preamble = preamble;
    // The records written are all there is: no EVLRs follow them.
    if (s.header.versionMinor >= 4) {
        detail::store<uint64_t>(s.preamble.data() + detail::kEvlrStart, 0);
        detail::store<uint32_t>(s.preamble.data() + detail::kEvlrCount, 0);
    }
    const bool laz = detail::lazName(path);
    if (laz && !detail::lazBuiltIn())
        detail::failNoLaz(path);
    s.file = std::make_unique<detail::StagedFile>(path);
    if (laz) {
        s.file->release();
        s.laz =
            std::make_unique<detail::LazEncoder>(s.file->temporaryPath(), path, s.preamble, s.header, vlrs);
    } else {
        s.file->append(s.preamble.data(), s.preamble.size());
        s.buffer.reserve(kWriteBuffer);
    }
}

RecordWriter::~RecordWriter()
{
    // The encoder lets go of the temporary before the staged file removes it.
    if (state_)
        state_->laz.reset();
}

void RecordWriter::write(const uint8_t* records, std::size_t n)
{
    State& s = *state_;
    if (s.finished)
        detail::fail(s.path, "records written after finish()");
    const std::size_t length = s.header.recordLength;
    s.tally.add(s.header, records, n);
    if (s.laz) {
        s.laz->write(records, n);
        return;
    }
    const std::size_t bytes = n * length;
    if (s.buffer.size() + bytes > kWriteBuffer)
        s.flush();
    if (bytes >= kWriteBuffer)
        s.file->append(records, bytes);
    else
        s.buffer.insert(s.buffer.end(), records, records + bytes);
}

void RecordWriter::finish()
{
    State& s = *state_;
    if (s.finished)
        detail::fail(s.path, "finish() called twice");
    s.finished = true;
    try {
        if (s.header.versionMinor < 4 && s.tally.count > 0xFFFFFFFFull)
            detail::fail(s.path, "a LAS 1." + std::to_string(s.header.versionMinor) + " file holds at most " +
                                     "4294967295 points, not " + std::to_string(s.tally.count));
        if (s.laz) {
            s.laz->finish(s.tally);
            s.laz.reset();
        } else {
            s.flush();
            s.tally.store(s.preamble.data(), s.header);
            s.file->overwrite(0, s.preamble.data(), s.header.headerSize);
        }
        s.file->commit();
    } catch (...) {
        // Nothing of a failed file stays behind, under either name.
        s.laz.reset();
        s.file->discard();
        throw;
    }
}

} // namespace vx::las
