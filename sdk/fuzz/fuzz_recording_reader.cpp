// Feeds arbitrary bytes to the recording reader as a file: opening it, describing its cameras and reading
// every sample must end in samples or an Exception, never a crash, a hang or unbounded memory.
#include "RecordingReader.h"

#include "Zerlane/Exceptions.h"

#include <cstdio>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string file = "/dev/shm/fuzz_recording_" + std::to_string(getpid()) + ".mkv";
    std::FILE* out = std::fopen(file.c_str(), "wb");
    if (!out)
        return 0;
    std::fwrite(data, 1, size, out);
    std::fclose(out);
    try {
        Zerlane::recording::RecordingReader reader(file);
        Zerlane::recording::RecordingReader::Sample sample;
        for (int i = 0; i < 200 && reader.next(sample); ++i)
            sample = {};
        reader.rewind();
        reader.next(sample);
    } catch (const Zerlane::Exception&) {
    }
    return 0;
}
