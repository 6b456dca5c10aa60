// Renders the show's music to an Ogg Vorbis or FLAC file, by the file's ending, and prints what it measured.
//
//     music OUT.ogg          the piece
//     music --grid           the tempo grid: first bar, second and name of each section
//     music --notes          all notes: start and length in seconds, level, hertz, voice

#include "mix.h"
#include "orchestra.h"
#include "score.h"

#include <sndfile.h>

#include <cstdio>
#include <string>

namespace
{

void printGrid()
{
    std::printf("%.0f beats a minute, %d bars, %.3f seconds\n", 60.0 / Music::SECONDS_PER_BEAT, Music::BARS,
                Music::BARS * Music::SECONDS_PER_BAR);
    for (const Music::Section& section : Music::SECTIONS)
        std::printf("bar %3d  %7.3f s  %s\n", section.firstBar, section.firstBar * Music::SECONDS_PER_BAR,
                    section.name);
}

void printNotes()
{
    for (const Music::Note& note : Music::notes())
        std::printf("%8.3f %6.3f %5.2f %8.2f  %s\n", note.start, note.length, double(note.level), note.hertz,
                    Music::nameOf(note.voice));
}

// False, with a line on standard error, if the file cannot be written.
bool write(const char* filename, const Music::Track& track)
{
    const std::string name = filename;
    const bool flac = name.size() > 5 && name.substr(name.size() - 5) == ".flac";
    SF_INFO info = {};
    info.samplerate = Music::sampleRate;
    info.channels = 2;
    info.format = flac ? SF_FORMAT_FLAC | SF_FORMAT_PCM_16 : SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    SNDFILE* file = sf_open(filename, SFM_WRITE, &info);
    if (!file)
    {
        std::fprintf(stderr, "Error: %s: %s\n", filename, sf_strerror(nullptr));
        return false;
    }
    double quality = 0.6;
    sf_command(file, SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof quality);
    sf_set_string(file, SF_STR_TITLE, "Glacier heart");
    // In small steps: the Vorbis encoder keeps a whole step on its stack.
    const std::size_t step = 4096;
    bool good = true;
    for (std::size_t i = 0; good && i < track.size(); i += step)
    {
        const sf_count_t count = sf_count_t(std::min(step, track.size() - i));
        good = sf_writef_float(file, &track[i].left, count) == count;
    }
    if (sf_close(file) != 0) good = false;
    if (!good) std::fprintf(stderr, "Error: %s could not be written whole\n", filename);
    return good;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string argument = argc == 2 ? argv[1] : "-";
    if (argument == "--grid")
    {
        printGrid();
        return 0;
    }
    if (argument == "--notes")
    {
        printNotes();
        return 0;
    }
    if (argument[0] == '-')
    {
        std::fprintf(stderr, "usage: music OUT.ogg | music --grid | music --notes\n");
        return 2;
    }
    static_assert(sizeof(Music::Stereo) == 2 * sizeof(float), "samples are written as pairs of floats");
    Music::Orchestra orchestra;
    Music::perform(orchestra);
    const Music::Track track = Music::mix(orchestra);
    float peak = 0.0f;
    for (const Music::Stereo& sample : track) peak = std::max({peak, std::fabs(sample.left), std::fabs(sample.right)});
    std::printf("%s: %.1f seconds, %.1f LUFS, peak %.2f dB\n", argv[1], double(track.size()) / Music::sampleRate,
                Music::loudness(track), 20.0 * std::log10(peak));
    return write(argv[1], track) ? 0 : 1;
}
