// Times the INI engine and its peers on the same files. Names are <operation>/<engine>/<shape>:<count>;
// ratios.py makes ratios of them.
#include "IniPeers.h"
#include "ThreadTime.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <fstream>
#include <io.h>
#include <malloc.h>
#include <string>
#include <unistd.h>
#include <vector>
#include <windows.h>

namespace {

/// A file on disk and every name in it, in order.
struct Sample {
    std::string shape;
    std::string path;
    std::string text;
    std::vector<std::string> sections;
    std::vector<std::pair<std::size_t, std::string>> keys; ///< number of the section and key
};

std::filesystem::path folder() {
    static const struct Folder {
        std::filesystem::path path =
            std::filesystem::temp_directory_path() / ("vykel-bench-" + std::to_string(getpid()));
        Folder() { std::filesystem::create_directories(path); }
        ~Folder() { std::filesystem::remove_all(path); }
    } made;
    return made.path;
}

void write(Sample& sample, std::string text) {
    sample.path =
        (folder() / (sample.shape.substr(0, sample.shape.find(':')) + std::to_string(text.size()) + ".ini"))
            .string();
    std::ofstream(sample.path, std::ios::binary) << text;
    sample.text = std::move(text);
}

/// A file of sections with three keys each, as the legacy file holds aliases by token.
Sample manySections(const std::string& shape, std::size_t count) {
    Sample sample;
    sample.shape = shape;
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        sample.sections.push_back("Alias" + number);
        text += "[Alias" + number + "]\r\nAlias=\"Lab " + number + "\"\r\nPersistentToken=\"USB-" + number +
                "\"\r\nLocal=True\r\n\r\n";
        for (const char* key : {"Alias", "PersistentToken", "Local"})
            sample.keys.emplace_back(i, key);
    }
    write(sample, std::move(text));
    return sample;
}

/// A file of one section with many keys, as the legacy file holds aliases by resource name.
Sample manyKeys(const std::string& shape, std::size_t count) {
    Sample sample;
    sample.shape = shape;
    sample.sections.emplace_back("Aliases");
    std::string text = "[Aliases]\r\n";
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        sample.keys.emplace_back(0, "Lab" + number);
        text += "Lab" + number + "=KEL" + number + "\r\n";
    }
    write(sample, std::move(text));
    return sample;
}

std::string savedPath(const Sample& sample) {
    return sample.path + ".saved";
}

/// Times `work` on a fresh, loaded model in every iteration.
template <class Engine, class Work>
void timeLoaded(benchmark::State& state, const Sample& sample, Work work) {
    for (auto _ : state) {
        Engine engine;
        if (!engine.load(sample.path.c_str())) {
            state.SkipWithError("load failed");
            return;
        }
        std::filesystem::remove(savedPath(sample)); // a file that is replaced may be flushed to the disk
        const double start = bench::threadSeconds();
        const bool done = work(engine);
        state.SetIterationTime(bench::threadSeconds() - start);
        if (!done) {
            state.SkipWithError("operation failed");
            return;
        }
    }
}

template <class Engine>
void load(benchmark::State& state, const Sample& sample) {
    for (auto _ : state) {
        Engine engine;
        if (!engine.load(sample.path.c_str())) {
            state.SkipWithError("load failed");
            return;
        }
    }
}

template <class Engine>
void lookup(benchmark::State& state, const Sample& sample) {
    Engine engine;
    if (!engine.load(sample.path.c_str())) {
        state.SkipWithError("load failed");
        return;
    }
    for (auto _ : state) {
        for (const auto& [section, key] : sample.keys) {
            if (!engine.find(sample.sections[section].c_str(), key.c_str())) {
                state.SkipWithError("lookup failed");
                return;
            }
        }
    }
}

template <class Engine>
void removeAll(benchmark::State& state, const Sample& sample) {
    timeLoaded<Engine>(state, sample, [&](Engine& engine) {
        bool done = true;
        if (sample.sections.size() == 1)
            for (const auto& [section, key] : sample.keys)
                done = engine.removeKey(sample.sections[section].c_str(), key.c_str()) && done;
        else
            for (const std::string& section : sample.sections)
                done = engine.removeSection(section.c_str()) && done;
        return done;
    });
}

template <class Engine>
void save(benchmark::State& state, const Sample& sample) {
    const std::string target = savedPath(sample);
    timeLoaded<Engine>(state, sample, [&](Engine& engine) { return engine.save(target.c_str()); });
}

/// The least that a safe save must do: write a temporary file, flush it to the disk, and rename it.
bool saveSafelyByHand(const std::string& text, const std::string& target) {
    const std::string temporary = target + ".TMP";
    std::FILE* const file = std::fopen(temporary.c_str(), "wb");
    if (file == nullptr)
        return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const bool flushed = std::fflush(file) == 0 &&
                         FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)))) != FALSE;
    const bool closed = std::fclose(file) == 0;
    return written && flushed && closed &&
           MoveFileExA(temporary.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

/// Times the engine's safe save or the one by hand. It does both in turn, so that the disk is in the same
/// state before each. The median counts: some flushes take many times as long as others.
void saveSafely(benchmark::State& state, const Sample& sample, bool timesEngine) {
    bench::Vykel engine;
    const std::string target = savedPath(sample);
    bool done = engine.load(sample.path.c_str()) && saveSafelyByHand(sample.text, target);
    std::vector<double> microseconds;
    for (auto _ : state) {
        double start = bench::threadSeconds();
        done = done && engine.saveSafely(target.c_str());
        const double byEngine = bench::threadSeconds() - start;
        start = bench::threadSeconds();
        done = done && saveSafelyByHand(sample.text, target);
        const double byHand = bench::threadSeconds() - start;
        state.SetIterationTime(timesEngine ? byEngine : byHand);
        microseconds.push_back(1e6 * (timesEngine ? byEngine : byHand));
        if (!done) {
            state.SkipWithError("operation failed");
            return;
        }
    }
    std::sort(microseconds.begin(), microseconds.end());
    state.counters["median"] = microseconds[microseconds.size() / 2];
}

void saveSafelyByEngine(benchmark::State& state, const Sample& sample) {
    saveSafely(state, sample, true);
}

void saveSafelyFloor(benchmark::State& state, const Sample& sample) {
    saveSafely(state, sample, false);
}

/// Counts the heap bytes that a loaded model holds, also for each byte of the file. It holds many small
/// models at once, so that what the heap keeps in its caches does not count.
template <class Engine>
void memory(benchmark::State& state, const Sample& sample) {
    const auto held = [] {
        const struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    const std::size_t count = 1 + 1000000 / sample.text.size();
    double bytes = 0;
    for (auto _ : state) {
        const std::size_t before = held();
        std::deque<Engine> engines(count);
        for (Engine& engine : engines) {
            if (!engine.load(sample.path.c_str())) {
                state.SkipWithError("load failed");
                return;
            }
        }
        bytes = static_cast<double>(held() - before) / static_cast<double>(count);
    }
    state.counters["bytes"] = bytes;
    state.counters["perFileByte"] = bytes / static_cast<double>(sample.text.size());
}

benchmark::internal::Benchmark* add(const char* operation, const char* engine, const Sample& sample,
                                    void (*run)(benchmark::State&, const Sample&)) {
    const std::string name = std::string(operation) + "/" + engine + "/" + sample.shape;
    return benchmark::RegisterBenchmark(name.c_str(),
                                        [run, &sample](benchmark::State& state) { run(state, sample); })
        ->Unit(benchmark::kMicrosecond);
}

template <class Engine>
void addReading(const Sample& sample) {
    add("Load", Engine::name, sample, &load<Engine>);
    add("Lookup", Engine::name, sample, &lookup<Engine>);
    add("Memory", Engine::name, sample, &memory<Engine>);
}

template <class Engine>
void addDeleting(const Sample& sample) {
    add("Delete", Engine::name, sample, &removeAll<Engine>)->UseManualTime();
}

template <class Engine>
void addSaving(const Sample& sample) {
    add("Save", Engine::name, sample, &save<Engine>)->UseManualTime();
}

} // namespace

int main(int argc, char** argv) {
    const Sample samples[] = {manySections("bytes:600", 9), manySections("sections:1000", 1000),
                              manySections("sections:100000", 100000), manyKeys("keys:100000", 100000)};
    for (const Sample& sample : samples) {
        addReading<bench::Vykel>(sample);
        addReading<bench::SimpleIni>(sample);
        addReading<bench::GKeyFile>(sample);
        addReading<bench::Inih>(sample);
        addDeleting<bench::Vykel>(sample);
        addDeleting<bench::SimpleIni>(sample);
        addDeleting<bench::Inih>(sample);
        if (sample.keys.size() < 10000)
            addDeleting<bench::GKeyFile>(sample); // quadratic: ten minutes for 100,000
        addSaving<bench::Vykel>(sample);
        addSaving<bench::SimpleIni>(sample);
        addSaving<bench::GKeyFile>(sample);
        add("SafeSave", bench::Vykel::name, sample, &saveSafelyByEngine)->UseManualTime();
        add("SafeSave", "floor", sample, &saveSafelyFloor)->UseManualTime();
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
