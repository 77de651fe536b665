#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/cli.h"
#include "simulator/bench.h"

struct Told {
  int Status = -1;
  std::string Out, Err;
  std::string all() const { return Out + Err; }
};

/// Runs a command in the thread's world, so that several commands meet the same logger.
inline Told runHere(std::vector<std::string> words) {
  words.insert(words.begin(), "wristlog");
  std::vector<char*> pointers;
  pointers.reserve(words.size());
  for (std::string& word : words) pointers.push_back(word.data());
  wristlog::CommandLine cli;
  wristlog::addCommands(cli);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Told told;
  told.Status = cli.run(static_cast<int>(pointers.size()), pointers.data());
  told.Out = testing::internal::GetCapturedStdout();
  told.Err = testing::internal::GetCapturedStderr();
  return told;
}

/// The words of a command as a shell takes them, up to a comment, a pipe or a redirection.
inline std::vector<std::string> shellWords(const std::string& line) {
  std::vector<std::string> words;
  std::string word;
  char quote = 0;
  bool begun = false;
  const auto end = [&] {
    if (begun) words.push_back(word);
    word.clear();
    begun = false;
  };
  for (const char c : line + " ") {
    if (quote != 0 && c == quote) {
      quote = 0;
    } else if (quote == 0 && (c == '"' || c == '\'')) {
      quote = c;
      begun = true;
    } else if (quote == 0 && c == ' ') {
      end();
    } else if (quote == 0 && !begun && (c == '#' || c == '|' || c == '>')) {
      break;
    } else {
      word += c;
      begun = true;
    }
  }
  return words;
}

inline Told runHere(const std::string& line) { return runHere(shellWords(line)); }

inline void expectIn(const std::string& text, const std::vector<std::string>& words) {
  for (const std::string& each : words) EXPECT_NE(text.find(each), std::string::npos) << each << "\n" << text;
}

/// A world with one dock, in which commands run as long as it lives.
template <class Bench>
struct Desk {
  explicit Desk(Bench made) : bench(std::move(made)) {}
  Bench bench;
  hy_wristlog::platform::WorldScope scope{bench.World};

  /// What a command sends to the logger.
  std::string sentBy(const std::string& line, Told& told) {
    using hy_wristlog::simulator::Direction;
    std::string sent;
    bench.line().Tap = [&](Direction direction, std::uint8_t byte) {
      if (direction == Direction::ToLogger) sent += static_cast<char>(byte);
    };
    told = runHere(line);
    bench.line().Tap = nullptr;
    return sent;
  }
};
