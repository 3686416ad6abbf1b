// Vexaro: classification of airborne LiDAR point clouds on a GPU or the CPU.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "VexaroParameters.h"

#if defined(_WIN32)
#define VEXARO_API __declspec(dllexport)
#else
#define VEXARO_API __attribute__((visibility("default")))
#endif

template <class T> class ClassifierCore;

namespace vx {
template <class T> struct EngineAccess;
namespace las {
class LasFile;
}
} // namespace vx

namespace vexaro {
/// Thrown when a LAS file cannot be read or written; the message names the file and the problem.
class VEXARO_API LasError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
} // namespace vexaro

/// One point as exchanged with the library: 36 bytes for float, 64 for double.
template <class T> struct VX_Point {
    T x, y, z;         ///< coordinates, centred on the cloud's bounding box when loaded from LAS
    T nx, ny, nz;      ///< unit normal, exactly (0, 0, 0) when none could be computed
    float heightIndex; ///< relative height inside the point's cell
    int32_t classification;
    int32_t lastReturn; ///< 1 when the return is the last of its pulse
};

/// Report of the selected compute device.
struct CudaInfo {
    int32_t deviceFound = 0;
    int32_t tdrLevel = 0;
    bool tdrKeyFound = false;
    bool tdrLevelFound = false;
    std::string deviceName;
};

/// The classifier. One object per point cloud; copies share the same engine.
template <class T> class VEXARO_API Vexaro {
public:
    Vexaro();
    Vexaro(const Vexaro& other);
    Vexaro& operator=(const Vexaro& other);
    ~Vexaro();

    // --- data exchange ---
    void loadLASFile(std::string fileName);
    void loadDirectData(VX_Point<T>* points, int count);
    void saveLASFile(std::string fileName);
    void saveClassesToBuffer(short* buffer, int count);
    bool saveNormalVectors(std::string name);
    void clearAllMemory();

    // --- settings ---
    void setMessageLevel(int level);
    void set_Threads(int threads);
    void set_SoA(bool soa);
    void set_NormalVectorDecompositionSize(double size);
    void set_AllowedInputClasses(int* table, int count);

    // --- devices ---
    std::string setCudaDevice(int index);
    std::map<int, std::string> getAvailableDevices();
    CudaInfo getCudaInfo();
    /// "auto" (CUDA when a device exists, else host), "cpu" or "cuda". Throws std::invalid_argument
    /// for an unknown name and std::runtime_error when CUDA is asked for but unavailable.
    void setComputeBackend(const std::string& backend);
    /// Name of the backend in use: "cpu" or "cuda".
    std::string computeBackend() const;
    /// Host backend threads; 1 runs every launch in ascending index order. 0 or less: all cores.
    void setHostThreads(int threads);
    /// Called with the error code instead of the default print, pause and exit.
    void setDeviceErrorHandler(std::function<void(int code)> handler);
    /// Threshold of the loading, saving and mode messages (default 2, clamped to 0..4).
    void setFacadeMessageLevel(int level);

    // --- parameters ---
    // For every entry of VEXARO_PARAMETERS (VexaroParameters.h: kind, default, unit, valid
    // range, help, steps that read it): set_<Name> stores the value as given, whatever it is
    // (a step checks its parameters before it runs), and get_<Name> returns the stored value.
#define VEXARO_DECLARE_PARAMETER(Name, Field, Kind, ...)                                                     \
    void set_##Name(VEXARO_PARAMETER_ARG_##Kind v);                                                          \
    VEXARO_PARAMETER_TYPE_##Kind get_##Name() const;
    VEXARO_PARAMETERS(VEXARO_DECLARE_PARAMETER)
#undef VEXARO_DECLARE_PARAMETER

    /// How far the ground, building and vegetation steps look with the current parameters: the
    /// largest Reach x value over VEXARO_PARAMETERS (2 with the defaults).
    double rangeGridCellSize() const;
    /// regularGridDecomposition2D with square columns of rangeGridCellSize(), so that a point's
    /// own and adjacent columns hold every neighbour the later steps search for.
    void regularGridDecomposition2DFromRanges();

    // --- processing steps ---
    void calculateNormalVectors(int planarClass, int scatterClass, int linearClass);
    void regularGridDecomposition3D(double sx, double sy, double sz);
    void regularGridDecomposition3Dcube(double s);
    void regularGridDecomposition2D(double sx, double sy);
    void resetPointCloudClasses(int newClass);
    void gatherLowPoints(int lowClass, int groundClass);
    void calculateHeightIndex(int referenceClass);
    void findGroundSeed(int groundClass);
    void performIterativeGroundGrowth(int groundClass);
    void performGroundCorrection(int ignored);
    void performLowPointCorrection(int groundClass, int candidateClass, int replacementClass);
    void findBuildingSeed(int buildingClass, int groundClass, int sourceClass, int companionClass);
    void performIterativeBuildingGrowth(int buildingClass, int groundClass, int sourceClass,
                                        int companionClass);
    void performVegetationClassification(int lowVegetationClass, int mediumVegetationClass,
                                         int highVegetationClass, int groundClass, int ignored);

    /// Gives groundClass to the admitted points (allowed-input-classes table) that lie on the
    /// terrain: the surface left by cutting from the lowest points of TerrainCellSize cells every
    /// object narrower than twice TerrainWindow. Needs no grid and no normals. With
    /// TerrainBridgeWidth, TerrainWallHeight and TerrainClimb set, the climb leaves bridge decks
    /// cut, and a bridgeDeckClass of 0 or more is given to the admitted points on their surface
    /// (within TerrainGroundDistance of a deck cell's lowest point); -1 leaves them as they are.
    /// Wide land that the climb reaches only across the decks (beyond a river) stays terrain.
    void classifyTerrainGround(int groundClass, int bridgeDeckClass = -1);
    /// Marks isolated points and small far-off groups among the admitted points (allowed-input-classes
    /// table): lowNoiseClass for those lying below their surroundings, highNoiseClass above.
    /// Needs a planar grid (regularGridDecomposition2D) whose columns are at least NoiseRange
    /// wide; reads NoiseRange, NoiseMinNeighbours, NoiseHeightGap, NoiseGroupPoints and
    /// NoisePitDepth (a point that far below the plane through its others within NoiseRange in
    /// plan, which fit it closely, is low noise; 0 leaves that test out) and NoisePitGroup (how
    /// many returns may lie that low together, the point included; the plane is then fitted
    /// without them, and may lie up to NoiseHeightGap above).
    void classifyNoise(int lowNoiseClass, int highNoiseClass);
    // --- height above ground ---
    /// Interpolates the surface of the points of groundClass under every point and keeps each point's
    /// height above it (metres, or the cloud's units). The surface is a raster of
    /// HeightAboveGroundCellSize cells over the plan extent of the ground points: the mean height
    /// of each cell's ground points, empty cells filled from their neighbours, read bilinearly at
    /// each point; points beyond the extent read the surface at its edge.
    /// Without any ground point every height is NaN; a raster over 200 million cells is refused.
    void computeHeightAboveGround(int groundClass);
    /// Copies the heights, in file order (as saveClassesToBuffer does for classes); NaN where none.
    void saveHeightAboveGroundToBuffer(float* buffer, int count);
    /// Gives every admitted point (allowed-input-classes table) lowClass, mediumClass or highClass by
    /// its height above ground: below VegetationLowLimit, below VegetationHighLimit, or above.
    /// Points without a height (NaN) keep their class.
    void classifyByHeightAboveGround(int lowClass, int mediumClass, int highClass);
    /// Gives groundClass to every admitted point (allowed-input-classes table) whose height above
    /// ground lies within NearGroundDistance, above or below: returns on the final ground that an
    /// earlier step set aside, such as the few ground returns under a dense canopy that the noise
    /// step reads as a far-off group. Points without a height (NaN) keep their class.
    void classifyNearGround(int groundClass);
    /// Gives raisedClass to every admitted point (allowed-input-classes table) whose height above
    /// ground exceeds NearGroundDistance, and, where RaisedPointsMaxHeight is set, is at most
    /// that: points that an earlier step judged to lie low, such as a lone return inside a sparse
    /// crown, which the noise step reads against the crown above it, while the ground shows it
    /// standing well above. Points without a height (NaN) keep their class.
    void classifyRaisedPoints(int raisedClass);
    /// Gives groundClass to the admitted points (allowed-input-classes table) on steep faces of
    /// the ground, which a terrain surface of cells cannot follow: cliffs, quarry walls, steep
    /// banks. A point joins when ground points within SteepGroundRange in plan lie more than
    /// SteepGroundGap above and below it and span more than SteepGroundRelief, and the admitted
    /// and ground points within SteepGroundRange in 3D (at least SteepGroundMinPoints, the point
    /// included) lie on a surface: their smallest principal variance is at most
    /// SteepGroundVariation of the three together. Pass after pass, until no point joins, so that
    /// a face is taken from its foot and top inwards. Needs ground from an earlier step and a
    /// planar grid whose columns are at least SteepGroundRange wide.
    void classifySteepGround(int groundClass);
    /// Gives bumpClass to the admitted points (allowed-input-classes table) that stand out of the
    /// ground around them: the other points of groundClass within BumpRange in plan (at least
    /// six, not on a line) fit a least-squares plane that the point stands above by more than
    /// BumpHeight and by more than BumpScatterMultiple times their RMS distance from it. Cars,
    /// low walls and shrubs that a terrain surface's allowance took for ground stand out of the
    /// smooth ground beside them; on rough or curved ground the scatter raises the limit. Needs a
    /// planar grid whose columns are at least BumpRange wide.
    void classifyGroundBumps(int groundClass, int bumpClass);
    /// Gives groundClass to the admitted points (allowed-input-classes table) that continue the
    /// ground beside them at their own height: the upper edge of a terrace or a bank, which a
    /// terrain surface of cells passes below where a cell straddles the step. A point standing
    /// more than RimHeight above the ground (the heights of computeHeightAboveGround) joins when
    /// the points of groundClass within RimRange in plan that lie no lower than RimDistance below
    /// it (at least six, spread in plan rather than along a line) fit a least-squares plane with
    /// an RMS distance of at most RimDistance that passes within RimDistance of it. A shrub or a
    /// crown has no ground at its own height beside it, and on a slope the ground uphill fits the
    /// slope's plane, which passes below the plant. Needs the heights of computeHeightAboveGround
    /// and a planar grid whose columns are at least RimRange wide.
    void classifyGroundRims(int groundClass);
    /// Gives buildingClass to the admitted points (allowed-input-classes table) that lie on roofs
    /// by their echoes: a roof stops the pulse and returns one echo, a canopy mostly several. A
    /// point at least EchoMinHeight above the ground is a roof point when the points within
    /// EchoRange in plan that are that high (admitted or of buildingClass, itself included) number
    /// at least EchoMinPoints, come from single-return pulses for at least EchoSingleShare of
    /// them, and lie within EchoRoughness (RMS) of their best-fitting plane. Needs the heights of
    /// computeHeightAboveGround, the return counts of the loaded LAS file (or of
    /// loadReturnCountsFromBuffer) and a planar grid whose columns are at least EchoRange wide;
    /// does nothing, with a message, when under 1 % of the points come from pulses with several
    /// returns, unless EchoSingleShare is 0: then the echoes are not read, and the height, the
    /// number of neighbours and the plane decide on any data (single-return data has no other
    /// sign).
    void classifyRoofsByEchoes(int buildingClass);
    /// Grows buildingClass over the admitted points that roofs surround: an admitted point at
    /// least EchoMinHeight above the ground, from a single-return pulse, joins when at least
    /// EchoGrowthShare of the other points within EchoRange in plan that are that high (of any
    /// class) are of buildingClass; passes repeat until none joins. It takes the ridges, edges
    /// and eaves whose neighbourhood fits no single plane. Needs what classifyRoofsByEchoes
    /// needs, and does nothing, with a message, where that does nothing.
    void growRoofsByEchoes(int buildingClass);
    /// Grows the vegetation over the admitted points that canopy surrounds: an admitted point at
    /// least VegetationLowLimit above the ground, from a pulse with several returns, joins when
    /// at least EchoGrowthShare of the other points within EchoRange in plan that are that high
    /// (of any class) are of the three classes, and takes the class of its height (below
    /// VegetationHighLimit mediumClass, from it on highClass); passes repeat until none joins.
    /// It takes the crowns that the vegetation step leaves where few returns reach the ground.
    /// Needs what classifyRoofsByEchoes needs, and does nothing, with a message, where that does
    /// nothing.
    void growVegetationByEchoes(int lowClass, int mediumClass, int highClass);
    /// Gives the loaded cloud the number of returns of each point's pulse, in the order of the
    /// points (loadLASFile takes them from the file).
    void loadReturnCountsFromBuffer(const int* numberOfReturns, int count);
    /// Gives waterClass to the points of groundClass that lie on water. Water reflects little of
    /// an infrared pulse back to the sensor: its returns are dark, sparse (many pulses give none),
    /// single and level. Square cells of WaterCellSize are water cells when at least 90 % of
    /// their points are of groundClass, at least WaterSingleShare of those come from
    /// single-return pulses, and their mean intensity is below WaterDarkRatio times the median
    /// intensity of all points of groundClass. Water cells that touch (diagonals included) form
    /// a body, which is water when it covers at least WaterMinSize squared and ten cells, holds fewer points
    /// a cell than WaterSparseRatio times a typical cell's (the median over all points of the number of
    /// points in their cell), and its cells' lowest ground spans at most WaterRelief (5th to 95th
    /// percentile). Dark roads and roofs are as dense as their surroundings; bright gaps between flight lines
    /// are not dark. Needs the intensities and return counts of the loaded LAS file (or of
    /// loadIntensitiesFromBuffer and loadReturnCountsFromBuffer) and a decomposition; does nothing, with a
    /// message, when the intensities of the ground are all the same (a file without intensities).
    void classifyWater(int groundClass, int waterClass);
    /// Gives the loaded cloud the intensity of each point's return, 0 to 65535, in the order of
    /// the points (loadLASFile takes them from the file).
    void loadIntensitiesFromBuffer(const int* intensities, int count);
    /// saveLASFile, and with withHeightAboveGround the heights of computeHeightAboveGround as the
    /// extra-bytes dimension "HeightAboveGround" (float, 4 more bytes a record; NaN where none).
    void saveLASFile(std::string fileName, bool withHeightAboveGround);

    /// Number of points held by the engine.
    int pointCount() const;
    /// Copy of the host records (gathered from the per-field arrays in that layout).
    void copyPoints(VX_Point<T>* out, int count);

private:
    friend struct vx::EngineAccess<T>; // the library's own tests reach the engine through it

    bool autoSaveNormals = false;
    std::shared_ptr<ClassifierCore<T>> core;
    std::shared_ptr<vx::las::LasFile> las; ///< header and records of the last loaded file (replaced, never
                                           ///< modified, by a load, so copies may share it)
    std::string baseName;
    int32_t facadeMessageLevel = 2;
    bool normalsComputed = false;
    bool soa = true;
    double normalVectorDecompositionSize = 0.0;

    template <class Driver> void runStep(const char* mode, Driver&& driver);
    void writeLasFile(const std::string& fileName, bool withHeightAboveGround);
    /// The heights of the loaded cloud in file order, or empty when none were computed for it.
    std::vector<float> heightsAboveGround();
    bool parametersValidFor(unsigned steps);
    /// Whether an added step may run: data loaded, the parameters of `steps` valid and at least
    /// one point; otherwise says why (`step` names it in the message for an empty cloud).
    bool addedStepReady(unsigned steps, const char* step);
    /// Whether a height-above-ground step may run: data loaded and its parameters valid, with
    /// the cloud then on the backend; otherwise says why. An empty cloud may run.
    bool heightStepReady();
    void facadeMessage(int level, const std::string& text, const std::string& value = "");
};

extern template class Vexaro<float>;
extern template class Vexaro<double>;
