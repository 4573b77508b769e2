// Reading, deriving and packaging Blu-ray discs in each form they come in, against what cannot be avoided:
// reading the same files into memory and hashing them once. Peak memory is that of a process of its own.
#include "bdmeta/bluray_titles.h"
#include "bench/bench_disc.h"
#include "package/bluray_package.h"
#include "package/encoding.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>

namespace {

using testsupport::DiscForm;

// A disc on disk in every form.
struct BenchDisc {
    explicit BenchDisc(const bench::DiscShape& shape)
    {
        const testsupport::DiscTree tree = buildDisc(shape);
        for (const DiscForm form : {DiscForm::Directory, DiscForm::Iso, DiscForm::Udf}) {
            paths[form] = tree.write(form, folder);
        }
        navigationBytes = bench::navigationBytes(paths[DiscForm::Directory]);
    }

    testsupport::TemporaryFolder folder;
    std::map<DiscForm, std::string> paths;
    std::uint64_t navigationBytes = 0;
};

const BenchDisc& disc(bool isDecoy)
{
    static const BenchDisc decoy(bench::kDecoyDisc);
    static const BenchDisc ordinary(bench::kOrdinaryDisc);
    return isDecoy ? decoy : ordinary;
}

struct Derived {
    bdmeta::BlurayDisc disc;
    std::vector<bdmeta::BlurayTitle> titles;
    bdmeta::BlurayDiscSummary summary;
};

void read(const std::string& path, Derived& derived)
{
    if (bdmeta::readBlurayDisc(path.c_str(), &derived.disc, nullptr, 0) != 0) {
        throw std::runtime_error("the disc cannot be read");
    }
}

void derive(Derived& derived)
{
    bdmeta::SizeFallback fallback;
    discio::ReadBudget budget;
    if (bdmeta::deriveBlurayTitles(&derived.disc, &derived.titles, &derived.summary, &fallback, budget) !=
            0 ||
        fallback.count != 0) {
        throw std::runtime_error("the titles cannot be derived from packet ranges");
    }
}

// What no reader can do without: every file into memory, and one pass of the digest over it.
void readAndHash(const std::string& directory)
{
    for (const char* part : {"BDMV/PLAYLIST", "BDMV/CLIPINF"}) {
        for (const auto& entry :
             std::filesystem::directory_iterator(std::filesystem::path(directory) / part)) {
            std::vector<std::uint8_t> bytes(entry.file_size());
            const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(
                std::fopen(entry.path().c_str(), "rb"), std::fclose);
            if (!file || std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
                throw std::runtime_error("a file cannot be read");
            }
            benchmark::DoNotOptimize(package::sha256(package::viewOf(bytes)));
        }
    }
}

double seconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The process's peak so far, in bytes.
std::uint64_t peakMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) { return std::strtoull(line.c_str() + 6, nullptr, 10) * 1024; }
    }
    return 0;
}

constexpr char kPeakOption[] = "--print-peak-of";

// By how much reading and deriving raise the peak of this process, which has done nothing else.
int printPeakOf(const char* path)
{
    const std::uint64_t before = peakMemory();
    Derived derived;
    read(path, derived);
    derive(derived);
    std::printf("%llu\n", static_cast<unsigned long long>(peakMemory() - before));
    return 0;
}

// The same of a fresh process.
std::uint64_t peakMemoryOf(const std::string& path)
{
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string command = program + ' ' + kPeakOption + " '" + path + '\'';
    const std::unique_ptr<std::FILE, decltype(&::pclose)> output(::popen(command.c_str(), "r"), ::pclose);
    std::array<char, 32> line = {};
    if (!output || std::fgets(line.data(), line.size(), output.get()) == nullptr) {
        throw std::runtime_error("the peak cannot be measured");
    }
    return std::strtoull(line.data(), nullptr, 10);
}

void measure(benchmark::State& state, bool isDecoy, DiscForm form)
{
    const BenchDisc& measured = disc(isDecoy);
    const std::string& path = measured.paths.at(form);
    double readTime = 0;
    double deriveTime = 0;
    double packageTime = 0;
    double floorTime = 0;
    for ([[maybe_unused]] const auto round : state) {
        Derived derived;
        readTime += seconds([&] { read(path, derived); });
        deriveTime += seconds([&] { derive(derived); });
        packageTime += seconds([&] {
            benchmark::DoNotOptimize(
                package::buildBlurayPackage(&derived.disc, derived.titles, &derived.summary));
        });
        state.PauseTiming();
        floorTime += seconds([&] { readAndHash(measured.paths.at(DiscForm::Directory)); });
        state.ResumeTiming();
    }
    const auto rounds = static_cast<double>(state.iterations());
    const auto bytes = static_cast<double>(measured.navigationBytes);
    state.counters["read_ms"] = readTime / rounds * 1000;
    state.counters["derive_ms"] = deriveTime / rounds * 1000;
    state.counters["package_ms"] = packageTime / rounds * 1000;
    state.counters["floor_ms"] = floorTime / rounds * 1000;
    state.counters["time_ratio"] = (readTime + deriveTime) / floorTime;
    state.counters["navigation_MB"] = bytes / 1e6;
    state.counters["memory_ratio"] = static_cast<double>(peakMemoryOf(path)) / bytes;
}

}  // namespace

BENCHMARK_CAPTURE(measure, decoy_directory, true, DiscForm::Directory)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(measure, decoy_iso, true, DiscForm::Iso)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(measure, decoy_udf, true, DiscForm::Udf)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(measure, ordinary_directory, false, DiscForm::Directory)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(measure, ordinary_iso, false, DiscForm::Iso)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(measure, ordinary_udf, false, DiscForm::Udf)->Unit(benchmark::kMillisecond);

int main(int argc, char* argv[])
{
    if (argc == 3 && std::string_view(argv[1]) == kPeakOption) { return printPeakOf(argv[2]); }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) { return 2; }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
