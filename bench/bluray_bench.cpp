// Reading, deriving and packaging Blu-ray discs in each form they come in, against what cannot be avoided: reading the
// same files into memory and hashing them once. Peak memory is that of a process of its own. The discs are many
// playlists over few clips, as discs that hide their film among decoys have.
#include "bdmeta/bluray_titles.h"
#include "package/bluray_package.h"
#include "package/encoding.h"
#include "tests/support/bounded_child.h"
#include "tests/support/clpi_spec.h"
#include "tests/support/disc_tree.h"
#include "tests/support/mpls_spec.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <stdexcept>

namespace {

using testsupport::DiscForm;

constexpr std::uint32_t kEntryPoints = 5000;          // of each clip
constexpr std::uint32_t kEntryPointTicks = 88 * 256;  // half a second
constexpr std::uint32_t kEntryPointPackets = 3000;

std::string fiveDigits(std::uint32_t number)
{
    return std::to_string(100000 + number).substr(1);
}

// 1 video, 4 audio and 8 subtitle streams.
testsupport::StnTableSpec streams()
{
    testsupport::StnTableSpec stn;
    stn.primaryVideo = {{.pid = 0x1011, .attributes = testsupport::videoAttributes()}};
    for (std::uint16_t pid = 0x1100; pid < 0x1104; ++pid) {
        stn.primaryAudio.push_back({.pid = pid, .attributes = testsupport::audioAttributes()});
    }
    for (std::uint16_t pid = 0x1200; pid < 0x1208; ++pid) {
        stn.graphics.push_back({.pid = pid, .attributes = testsupport::graphicsAttributes()});
    }
    return stn;
}

testsupport::Bytes buildClip()
{
    std::vector<testsupport::EntryPoint> points;
    for (std::uint32_t i = 0; i < kEntryPoints; ++i) {
        points.push_back({i * kEntryPointTicks, i * kEntryPointPackets});
    }
    const testsupport::ClpiSpec clip{.numberOfSourcePackets = kEntryPoints * kEntryPointPackets,
                                     .epStreams = {epStream(points)}};
    return clip.build();
}

testsupport::Bytes buildPlaylist(std::uint32_t number, std::uint32_t playItems, std::uint32_t clips)
{
    testsupport::MplsSpec playlist{.playItems = {}};
    for (std::uint32_t i = 0; i < playItems; ++i) {
        const std::uint32_t begin = (number * 31 + i * 17) % (kEntryPoints / 2);
        playlist.playItems.push_back({.clipName = fiveDigits((number * 7 + i) % clips),
                                      .inTime = begin * kEntryPointTicks + 100,
                                      .outTime = (begin + kEntryPoints / 3) * kEntryPointTicks + 100,
                                      .stn = streams()});
        playlist.marks.push_back({.refToPlayItemId = static_cast<std::uint16_t>(i)});
    }
    return playlist.build();
}

// A disc on disk in every form. Stream files hold one byte.
struct BenchDisc {
    BenchDisc(std::uint32_t playlists, std::uint32_t playItems, std::uint32_t clips)
    {
        testsupport::DiscTree tree;
        const auto addNavigation = [&](const std::string& path, const testsupport::Bytes& bytes) {
            navigationFiles.emplace_back(path, bytes.size());
            navigationBytes += bytes.size();
            tree.add(path, bytes);
        };
        for (std::uint32_t i = 0; i < playlists; ++i) {
            addNavigation("BDMV/PLAYLIST/" + fiveDigits(i) + ".mpls", buildPlaylist(i, playItems, clips));
        }
        for (std::uint32_t i = 0; i < clips; ++i) {
            addNavigation("BDMV/CLIPINF/" + fiveDigits(i) + ".clpi", buildClip());
            tree.add("BDMV/STREAM/" + fiveDigits(i) + ".m2ts", {0});
        }
        for (const auto& [form, name] :
             {std::pair{DiscForm::Directory, "directory"}, {DiscForm::Iso, "iso"}, {DiscForm::Udf, "udf"}}) {
            paths[name] = tree.write(form, folders[name]);
        }
    }

    std::map<std::string, testsupport::TemporaryFolder> folders;  // by the name of the form
    std::map<std::string, std::string> paths;
    std::vector<std::pair<std::string, std::size_t>> navigationFiles;  // path and size
    std::size_t navigationBytes = 0;
};

void require(bool isTrue, const char* message)
{
    if (!isTrue) { throw std::runtime_error(message); }
}

struct Derived {
    void read(const std::string& path)
    {
        require(readBlurayDisc(path.c_str(), &disc, nullptr, 0) == 0, "the disc cannot be read");
    }
    void derive()
    {
        bdmeta::SizeFallback fallback;
        discio::ReadBudget budget;
        require(deriveBlurayTitles(&disc, &titles, &summary, &fallback, budget) == 0 && fallback.count == 0,
                "the titles cannot be derived from packet ranges");
    }

    bdmeta::BlurayDisc disc;
    std::vector<bdmeta::BlurayTitle> titles;
    bdmeta::BlurayDiscSummary summary;
};

// What no reader can do without: every file into memory, and one pass of the digest over it.
void readAndHash(const BenchDisc& disc)
{
    for (const auto& [path, sizeBytes] : disc.navigationFiles) {
        testsupport::Bytes bytes(sizeBytes);
        std::ifstream file(disc.paths.at("directory") + '/' + path, std::ios::binary);
        require(!!file.read(reinterpret_cast<char*>(bytes.data()), std::ssize(bytes)),
                "a file cannot be read");
        benchmark::DoNotOptimize(package::sha256(package::viewOf(bytes)));
    }
}

// The milliseconds that the work takes, in a counter: the mean over all rounds.
void addTime(benchmark::State& state, const char* counter, const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    benchmark::Counter& total = state.counters[counter];
    total.flags = benchmark::Counter::kAvgIterations;
    total.value += time.count();
}

// By how much reading and deriving raise the memory of a process, in bytes.
double peakMemoryOf(const std::string& path)
{
    const auto work = [&path] {
        Derived derived;
        derived.read(path);
        derived.derive();
        return std::string();
    };
    return 1024 * static_cast<double>(testsupport::runInChild(work).extraKiB);
}

void measure(benchmark::State& state, const BenchDisc& disc, const std::string& path)
{
    for ([[maybe_unused]] const auto round : state) {
        Derived derived;
        addTime(state, "read_ms", [&] { derived.read(path); });
        addTime(state, "derive_ms", [&] { derived.derive(); });
        addTime(state, "package_ms", [&] {
            benchmark::DoNotOptimize(
                package::buildBlurayPackage(&derived.disc, derived.titles, &derived.summary));
        });
        state.PauseTiming();
        addTime(state, "floor_ms", [&] { readAndHash(disc); });
        state.ResumeTiming();
    }
    auto& counters = state.counters;
    counters["time_ratio"] = (counters["read_ms"] + counters["derive_ms"]) / counters["floor_ms"];
    counters["navigation_MB"] = static_cast<double>(disc.navigationBytes) / 1e6;
    counters["memory_ratio"] = peakMemoryOf(path) / static_cast<double>(disc.navigationBytes);
}

}  // namespace

int main(int argc, char* argv[])
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) { return 2; }
    const BenchDisc decoy(1500, 100, 500);
    const BenchDisc ordinary(60, 10, 40);
    for (const auto& [disc, name] : {std::pair{&decoy, "decoy_"}, {&ordinary, "ordinary_"}}) {
        for (const auto& [form, path] : disc->paths) {
            benchmark::RegisterBenchmark((name + form).c_str(), measure, std::cref(*disc), path)
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
