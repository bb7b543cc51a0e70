// Micro-benchmarks of the framework pieces the update program leans on: text lookup, settings
// load and save, the image cache and the event queue. Every benchmark X has a reference Ref_X
// that does the same job the plainest way the standard library and the toolkit allow;
// bench/run-bench prints the ratio of their medians.
//
// The image benchmarks need an X display (wxBitmap); without DISPLAY they are skipped.
#include <benchmark/benchmark.h>
#include <wx/app.h>
#include <wx/bitmap.h>
#include <wx/init.h>
#include <wx/log.h>

#include <stdlib.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "app/WorkerThread.h"
#include "foundation/InstrumentEnums.h"
#include "foundation/InstrumentSettings.h"
#include "language/InstrumentLanguage.h"
#include "language/LanguageTables.h"
#include "ui/ImageResources.h"
#include "ui/UIControls.h"

namespace {

bool g_haveDisplay = false;

// ---- text lookup ----

uint32_t NextTextId(uint32_t id) { return id == NS_LanguageTexts::kLastTextId ? 0 : id + 1; }

void TextLookup(benchmark::State& state) {
    SetSettingLanguage(static_cast<int>(state.range(0)));
    uint32_t id = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetText(id).size());
        id = NextTextId(id);
    }
    SetSettingLanguage(eLanguageEnglish);
}

// The tables indexed directly: what a lookup costs without the language setting behind it.
void Ref_TextLookup(benchmark::State& state) {
    using namespace NS_LanguageTexts;
    const std::string* table = GetLanguageTable(static_cast<int>(state.range(0)));
    uint32_t id = 0;
    for (auto _ : state) {
        const std::string& text = id >= kDeveloperFirstId && id <= kDeveloperLastId
                                      ? TEXTS_DEV[id - kDeveloperFirstId]
                                      : table[LanguageTableIndex(id)];
        benchmark::DoNotOptimize(text.size());
        id = NextTextId(id);
    }
}

BENCHMARK(TextLookup)->Arg(eLanguageEnglish)->Arg(eLanguageGerman);
BENCHMARK(Ref_TextLookup)->Arg(eLanguageEnglish)->Arg(eLanguageGerman);

// ---- settings load and save ----

// A scratch folder with a settings file as the program writes it; removed afterwards.
class CScratchSettings {
public:
    CScratchSettings() {
        char pattern[] = "/tmp/vtx-microbench-XXXXXX";
        if (mkdtemp(pattern)) m_folder = pattern;
        m_path = m_folder + "/settings.vtx";
        Collection().SaveOriginToFile(eSettingsOriginUser, m_path);
    }
    ~CScratchSettings() {
        std::remove(m_path.c_str());
        if (!m_folder.empty()) rmdir(m_folder.c_str());
    }
    bool IsOk() const { return !m_folder.empty(); }
    const std::string& Path() const { return m_path; }
    static CInstrumentSettingsCollection& Collection() {
        return *CSingleton<CInstrumentSettingsCollection>::GetInstance();
    }
    // The file's lines without their line ends.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::ifstream in(m_path, std::ios::binary);
        for (std::string line; std::getline(in, line);) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            lines.push_back(line);
        }
        return lines;
    }

private:
    std::string m_folder;
    std::string m_path;
};

void SettingsLoad(benchmark::State& state) {
    CScratchSettings scratch;
    if (!scratch.IsOk()) return state.SkipWithError("no scratch folder");
    for (auto _ : state)
        benchmark::DoNotOptimize(
            CScratchSettings::Collection().LoadOriginFromFile(eSettingsOriginUser, scratch.Path()));
}

// Reading the same file into a map of key to value.
void Ref_SettingsLoad(benchmark::State& state) {
    CScratchSettings scratch;
    if (!scratch.IsOk()) return state.SkipWithError("no scratch folder");
    for (auto _ : state) {
        std::map<std::string, std::string> values;
        std::ifstream in(scratch.Path(), std::ios::binary);
        for (std::string line; std::getline(in, line);) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            const std::string::size_type at = line.find(" = ");
            if (at != std::string::npos) values[line.substr(0, at)] = line.substr(at + 3);
        }
        benchmark::DoNotOptimize(values.size());
    }
}

void SettingsSave(benchmark::State& state) {
    CScratchSettings scratch;
    if (!scratch.IsOk()) return state.SkipWithError("no scratch folder");
    for (auto _ : state)
        benchmark::DoNotOptimize(
            CScratchSettings::Collection().SaveOriginToFile(eSettingsOriginUser, scratch.Path()));
}

// Writing the same lines, made beforehand, with a stream.
void Ref_SettingsSave(benchmark::State& state) {
    CScratchSettings scratch;
    if (!scratch.IsOk()) return state.SkipWithError("no scratch folder");
    const std::vector<std::string> lines = scratch.Lines();
    for (auto _ : state) {
        std::ofstream out(scratch.Path(), std::ios::binary | std::ios::trunc);
        for (const std::string& line : lines) out << line << "\r\n";
        out.close();
        benchmark::DoNotOptimize(out.good());
    }
}

BENCHMARK(SettingsLoad);
BENCHMARK(Ref_SettingsLoad);
BENCHMARK(SettingsSave);
BENCHMARK(Ref_SettingsSave);

// ---- image cache ----

constexpr uint32_t kFrameImage = CInstrumentProgressBase::kFrameImageId;
constexpr int kFrameKind = CInstrumentProgressBase::kFrameImageKind;

void ImageCacheHit(benchmark::State& state) {
    if (!g_haveDisplay) return state.SkipWithError("no X display");
    CImageResourceManager cache;
    if (!cache.Get(kFrameImage, kFrameKind)) return state.SkipWithError("no frame image");
    for (auto _ : state) benchmark::DoNotOptimize(cache.Get(kFrameImage, kFrameKind));
}

// A map under a mutex: the least a thread-safe cache can do.
void Ref_ImageCacheHit(benchmark::State& state) {
    if (!g_haveDisplay) return state.SkipWithError("no X display");
    std::mutex mutex;
    int image = 0;
    std::map<uint32_t, int*> images{{kFrameImage, &image}};
    for (auto _ : state) {
        std::lock_guard<std::mutex> lock(mutex);
        benchmark::DoNotOptimize(images.find(kFrameImage)->second);
    }
}

// A miss: the embedded image is found and turned into a screen image.
void ImageCacheLoad(benchmark::State& state) {
    if (!g_haveDisplay) return state.SkipWithError("no X display");
    CImageResourceManager cache;
    for (auto _ : state) {
        cache.Clear();
        benchmark::DoNotOptimize(cache.Get(kFrameImage, kFrameKind));
    }
}

// The same conversion from pixels found beforehand.
void Ref_ImageCacheLoad(benchmark::State& state) {
    if (!g_haveDisplay) return state.SkipWithError("no X display");
    CResourceImplementationManager* registry = CSingleton<CResourceImplementationManager>::GetInstance();
    const CResourceImplementationBase* resource = registry ? registry->Find(kFrameImage) : nullptr;
    if (!resource) return state.SkipWithError("no frame image");
    for (auto _ : state) {
        wxImage image;
        image.SetData(const_cast<unsigned char*>(resource->GetRgbData()), resource->GetWidth(),
                      resource->GetHeight(), true);
        const wxBitmap bitmap(image, wxBITMAP_SCREEN_DEPTH);
        benchmark::DoNotOptimize(bitmap.ConvertToImage().IsOk());
    }
}

BENCHMARK(ImageCacheHit);
BENCHMARK(Ref_ImageCacheHit);
BENCHMARK(ImageCacheLoad);
BENCHMARK(Ref_ImageCacheLoad);

// ---- event queue ----

constexpr unsigned long kIdle = 0;
constexpr unsigned long kStop = ~0ul;

class CQueue : public CEnumEvent<unsigned long> {
public:
    CQueue() : CEnumEvent<unsigned long>(kIdle, 1000, kStop) {}
    void Post(unsigned long value) { PostEvent(value); }
    unsigned long Take() { return WaitForEvent(); }
};

// The same first-in-first-out hand-over with a condition variable.
class CRefQueue {
public:
    void Post(unsigned long value) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_values.push_back(value);
        m_ready.notify_one();
    }
    unsigned long Take() {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_ready.wait_for(lock, std::chrono::seconds(1), [this] { return !m_values.empty(); })) return kIdle;
        const unsigned long value = m_values.front();
        m_values.pop_front();
        return value;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ready;
    std::deque<unsigned long> m_values;
};

// Post and take on one thread: the queue's own cost.
template <class Queue>
void PostTake(benchmark::State& state) {
    Queue queue;
    unsigned long value = 1;
    for (auto _ : state) {
        queue.Post(value);
        benchmark::DoNotOptimize(queue.Take());
        value = value == kStop - 1 ? 1 : value + 1;
    }
}

// A value to another thread and back, as a tick travels from the tick thread to its handler.
template <class Queue>
void HandOff(benchmark::State& state) {
    Queue there;
    Queue back;
    std::thread echo([&] {
        for (;;) {
            const unsigned long value = there.Take();
            if (value == kStop) return;
            if (value != kIdle) back.Post(value);
        }
    });
    unsigned long value = 1;
    for (auto _ : state) {
        there.Post(value);
        while (back.Take() == kIdle) {
        }
        value = value == kStop - 1 ? 1 : value + 1;
    }
    there.Post(kStop);
    echo.join();
}

void EventQueuePostTake(benchmark::State& state) { PostTake<CQueue>(state); }
void Ref_EventQueuePostTake(benchmark::State& state) { PostTake<CRefQueue>(state); }
void EventQueueHandOff(benchmark::State& state) { HandOff<CQueue>(state); }
void Ref_EventQueueHandOff(benchmark::State& state) { HandOff<CRefQueue>(state); }

BENCHMARK(EventQueuePostTake);
BENCHMARK(Ref_EventQueuePostTake);
BENCHMARK(EventQueueHandOff)->UseRealTime();
BENCHMARK(Ref_EventQueueHandOff)->UseRealTime();

class CBenchApp : public wxApp {
public:
    bool OnInit() override { return true; }
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    const char* display = std::getenv("DISPLAY");
    g_haveDisplay = display && *display;
    if (g_haveDisplay) {
        wxApp::SetInstance(new CBenchApp);
        if (!wxEntryStart(argc, argv)) {
            std::fprintf(stderr, "cannot open the X display %s\n", display);
            return 2;
        }
        delete wxLog::SetActiveTarget(new wxLogStderr);
        wxTheApp->CallOnInit();
        benchmark::RunSpecifiedBenchmarks();
        wxTheApp->OnExit();
        wxEntryCleanup();
    } else {
        wxInitializer init;
        delete wxLog::SetActiveTarget(new wxLogStderr);
        benchmark::RunSpecifiedBenchmarks();
    }
    benchmark::Shutdown();
    return 0;
}
