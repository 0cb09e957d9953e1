#include "Tests/Support/MediaProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "Tests/Support/TemporaryDirectory.h"

namespace Fixture {

namespace {

using Arguments = std::vector<std::string>;

void add(Arguments& arguments, std::initializer_list<std::string_view> more) {
  arguments.insert(arguments.end(), more.begin(), more.end());
}

// What it says on its error stream goes into `log`.
int exitStatusOf(Arguments& arguments, const std::filesystem::path& log) {
  std::vector<char*> vector;
  for (std::string& argument : arguments) vector.push_back(argument.data());
  vector.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  pid_t process = 0;
  const int failure = posix_spawnp(&process, vector[0], &actions, nullptr, vector.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure == ENOENT) {
    throw std::runtime_error(
        "Videos and voice notes are made by ffmpeg, which is not installed (Debian package ffmpeg).");
  }
  if (failure != 0) throw std::system_error(failure, std::generic_category(), "ffmpeg");
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "ffmpeg");
  }
  return status;
}

// Inputs and the result stand in a folder of their own while the program runs.
class Encoding {
 public:
  void addFilm(const Film& film) {
    writeFile(folder_ / "film", film.frames);
    const std::string size = std::to_string(film.width) + "x" + std::to_string(film.height);
    add(arguments_, {"-f", "rawvideo", "-pixel_format", "rgb24", "-video_size", size, "-framerate",
                     std::to_string(film.framesPerSecond), "-i", (folder_ / "film").native()});
  }

  void addSound(const Sound& sound) {
    Bytes samples;
    samples.reserve(sound.samples.size() * 2);
    for (const std::int16_t sample : sound.samples) {
      samples.push_back(static_cast<std::uint8_t>(sample & 0xFF));
      samples.push_back(static_cast<std::uint8_t>(sample >> 8 & 0xFF));
    }
    writeFile(folder_ / "sound", samples);
    add(arguments_,
        {"-f", "s16le", "-ar", std::to_string(sound.samplesPerSecond), "-ac", "1", "-i", (folder_ / "sound").native()});
  }

  Bytes result(std::initializer_list<std::string_view> codec, std::string_view format) {
    const std::filesystem::path result = folder_ / "result";
    add(arguments_, codec);
    add(arguments_, {"-threads", "1", "-fflags", "+bitexact", "-flags", "+bitexact", "-map_metadata", "-1", "-f",
                     format, result.native()});
    if (exitStatusOf(arguments_, folder_ / "log") != 0) {
      const Bytes log = readFile(folder_ / "log");
      throw std::runtime_error("ffmpeg failed: " + std::string(log.begin(), log.end()));
    }
    return readFile(result);
  }

 private:
  TemporaryDirectory folder_;
  Arguments arguments_ = {"ffmpeg", "-nostdin", "-loglevel", "error"};
};

}  // namespace

Bytes encodedVideo(const Film& film, const Sound& sound) {
  Encoding encoding;
  encoding.addFilm(film);
  encoding.addSound(sound);
  return encoding.result({"-c:v", "libx264", "-preset", "veryfast", "-crf", "25", "-pix_fmt", "yuv420p", "-c:a", "aac",
                          "-b:a", "64k", "-movflags", "+faststart"},
                         "mp4");
}

Bytes encodedAudio(const Sound& sound) {
  Encoding encoding;
  encoding.addSound(sound);
  return encoding.result({"-c:a", "aac", "-b:a", "64k"}, "ipod");
}

Bytes encodedVoiceNote(const Sound& sound) {
  Encoding encoding;
  encoding.addSound(sound);
  return encoding.result({"-c:a", "libopus", "-b:a", "24k", "-application", "voip"}, "ogg");
}

}  // namespace Fixture
