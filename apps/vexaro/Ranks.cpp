#include "Ranks.h"

#include <cstdlib>
#include <string>

#ifdef VEXARO_HAVE_MPI
// The C interface only.
#define OMPI_SKIP_MPICXX 1
#define MPICH_SKIP_MPICXX 1
#include <mpi.h>
#endif

namespace vx::app {

namespace {

#ifndef VEXARO_HAVE_MPI
/// An environment variable as a whole number, or fallback.
int envInt(const char* name, int fallback)
{
    const char* text = std::getenv(name);
    if (!text || !*text)
        return fallback;
    try {
        return std::stoi(text);
    } catch (const std::exception&) {
        return fallback;
    }
}
#endif

/// Open MPI, MPICH/Hydra and PMIx launchers each leave one of these in a rank's environment.
bool launchedAsRank()
{
    return std::getenv("OMPI_COMM_WORLD_SIZE") || std::getenv("PMI_SIZE") || std::getenv("PMIX_RANK");
}

} // namespace

bool Ranks::available()
{
#ifdef VEXARO_HAVE_MPI
    return true;
#else
    return false;
#endif
}

Ranks::Ranks()
{
#ifdef VEXARO_HAVE_MPI
    if (!launchedAsRank())
        return;
    int provided = 0;
    MPI_Init_thread(nullptr, nullptr, MPI_THREAD_FUNNELED, &provided);
    joined_ = true;
    MPI_Comm_rank(MPI_COMM_WORLD, &rank_);
    MPI_Comm_size(MPI_COMM_WORLD, &size_);
    MPI_Comm local;
    MPI_Comm_split_type(MPI_COMM_WORLD, MPI_COMM_TYPE_SHARED, rank_, MPI_INFO_NULL, &local);
    MPI_Comm_rank(local, &localRank_);
    MPI_Comm_size(local, &localSize_);
    MPI_Comm_free(&local);
#else
    // Started by a launcher without MPI built in: every rank would do all the work; the ranks
    // at least know how many copies run, so that the caller can refuse.
    if (launchedAsRank()) {
        size_ = envInt("OMPI_COMM_WORLD_SIZE", envInt("PMI_SIZE", 1));
        rank_ = envInt("OMPI_COMM_WORLD_RANK", envInt("PMI_RANK", 0));
    }
#endif
}

Ranks::~Ranks()
{
#ifdef VEXARO_HAVE_MPI
    if (joined_)
        MPI_Finalize();
#endif
}

uint64_t Ranks::sum(uint64_t value) const
{
#ifdef VEXARO_HAVE_MPI
    if (joined_) {
        unsigned long long in = value, out = 0;
        MPI_Allreduce(&in, &out, 1, MPI_UNSIGNED_LONG_LONG, MPI_SUM, MPI_COMM_WORLD);
        return out;
    }
#endif
    return value;
}

void Ranks::barrier() const
{
#ifdef VEXARO_HAVE_MPI
    if (joined_)
        MPI_Barrier(MPI_COMM_WORLD);
#endif
}

} // namespace vx::app
