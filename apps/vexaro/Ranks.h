// The processes of one run: this process alone, or the ranks of an MPI job when the tool is
// started by an MPI launcher (mpirun) and was built with MPI. Outside a launcher nothing of MPI
// is touched, so the tool starts as fast as without it.
#pragma once

#include <cstdint>

namespace vx::app {

class Ranks {
public:
    /// Joins the MPI job when the environment says the process was launched as one of its ranks.
    Ranks();
    /// Leaves the job (every rank must get here).
    ~Ranks();
    Ranks(const Ranks&) = delete;
    Ranks& operator=(const Ranks&) = delete;

    int rank() const { return rank_; }
    int size() const { return size_; }
    /// Ranks of the job on this node (1 without MPI), and this one's place among them.
    int localSize() const { return localSize_; }
    int localRank() const { return localRank_; }

    /// The sum of value over the ranks; every rank must call it.
    uint64_t sum(uint64_t value) const;
    /// Waits for every rank.
    void barrier() const;

    /// True when the tool can join an MPI job (built with MPI).
    static bool available();

private:
    int rank_ = 0, size_ = 1, localRank_ = 0, localSize_ = 1;
    bool joined_ = false;
};

} // namespace vx::app
