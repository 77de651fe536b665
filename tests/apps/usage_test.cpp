#include "apps/sandbox.h"

TEST(Usage, EachCommandSaysWhatItCannotTake) {
  const Sandbox box;
  const std::string simulated = "configure --model vivid --simulate vivid --mode 5 --epoch 60 ";
  const std::string longName(65, 'x');
  // clang-format off
  const std::pair<std::string, std::string> cases[] = {
      {"", "subcommand"}, {"raw bogus", "bogus"}, {"retreive", "Did you mean retrieve?"},
      {"status --modle vivid", "Did you mean --model?"}, {"legacy stauts", "Did you mean status?"},
      {"help statsu", "Did you mean status?"}, {"completion tcsh", "bash,zsh"},
      {"retrieve --model vivid --out ''", "--out"}, {"retrieve --model vivid --out x --retries 0", "--retries"},
      {"decode --config a --raw b --now 2026-02-29", "2026-02-29"},
      {"decode --config a --raw b --now '      2020-01-01T1'", "2020-01-01T1"}, {simulated + "--epoch 17", "--epoch"},
      {simulated + "--start 2039-01-01", "calendar"}, {simulated + "--set-time tomorrow", "tomorrow"},
      {simulated + "--weight nan", "nan"}, {simulated + "--height 1.755", "more than one decimal"},
      {simulated + "--guid zz", "32 hexadecimal digits"}, {simulated + "--gender ' '", "one letter"}, {simulated + "--identity " + longName, "64"},
      {simulated + "--identity 日本", "Western"}};
  // clang-format on
  for (const auto& [arguments, word] : cases) {
    SCOPED_TRACE(arguments);
    const Outcome outcome = box.run(arguments);
    EXPECT_EQ(outcome.Status, 2);
    EXPECT_EQ(outcome.Out, "");
    EXPECT_NE(outcome.Err.find(word), std::string::npos) << outcome.Err;
  }
  EXPECT_EQ(box.run("--version").Status, 0);
  EXPECT_NE(box.run("configure --help").Out.find("--epoch"), std::string::npos);
  EXPECT_EQ(box.run("help legacy status").Out, box.run("legacy status --help").Out);
  EXPECT_NE(box.run("help").Out.find("configure"), std::string::npos);
  const Json document = Json::parse(box.run("status --bogus --json").Out);
  EXPECT_EQ(keysOf(document.at("failure")), "number source description ");
}

TEST(Usage, AShellCompletesCommandsOptionsAndValues) {
  const Sandbox box;
  box.write("complete.sh",
            box.run("completion bash").Out +
                "COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _wristlog; echo \"${COMPREPLY[@]}\"\n");
  const std::pair<const char*, const char*> cases[] = {
      {"wristlog stat", "status\n"},          {"wristlog legacy stat", "status\n"},
      {"wristlog status --mod", "--model\n"}, {"wristlog status --model ''", "vivid kestrin2\n"},
      {"wristlog retrieve --out ''", "\n"},   {"wristlog zones --mod", "\n"}};
  for (const auto& [words, completed] : cases) {
    const std::string script = "cd " + box.Folder.string() + " && bash complete.sh " + words + " >.out";
    EXPECT_EQ(std::system(script.c_str()), 0);
    EXPECT_EQ(box.content(".out"), completed) << words;
  }
  EXPECT_NE(box.run("completion zsh").Out.find("'--model:The logger'\\''s model: vivid"), std::string::npos);
}

TEST(Usage, OutputThatCannotBeWrittenIsNoSuccess) {
  const Sandbox box;
  const Outcome full = box.run("zones", ">/dev/full");
  EXPECT_EQ(full.Status, 1);
  EXPECT_NE(full.Err, "");
  EXPECT_EQ(box.run("zones", ">&-").Status, 1);
  EXPECT_EQ(box.run("zones --json", "| true").Err, "") << "a reader who had enough is no news";

  // With its output closed, what the program opens must not take the place of the output.
  EXPECT_EQ(box.run("demo --out closed", ">&- 2>&-").Status, 1);
  EXPECT_EQ(box.content("closed/config.ini").rfind("[Configuration Bytes]", 0), 0U);
}

TEST(Usage, APlainMachineGetsUsefulWords) {
  const Sandbox box;
  const Outcome docks = box.run("docks");
  EXPECT_EQ(docks.Status, 0);
  EXPECT_NE(docks.Out.find("Docks.INI"), std::string::npos);
  const Outcome without = box.run("status --model kestrin2");
  EXPECT_EQ(without.Status, 1);
  EXPECT_NE(without.Err.find("Dock Not Connected"), std::string::npos);
  const Json status = Json::parse(box.run("status --model vivid --json").Out);
  EXPECT_EQ(
      keysOf(status),
      "return_code state_known simple_status long_status battery_life_remaining retrieval logger subject ");
  EXPECT_FALSE(status.at("state_known"));
  EXPECT_TRUE(status.at("logger").is_null());
  const Outcome retrieve = box.run("retrieve --model vivid --out none");
  EXPECT_EQ(retrieve.Status, 1);
  EXPECT_NE(retrieve.Err.find("No Kestrin Vivid dock is connected"), std::string::npos) << retrieve.Err;
}

TEST(Usage, ZonesAreKeptUnderLettersWithTheSameRulesOrRefused) {
  Sandbox box;
  const std::string configure = "configure --model vivid --mode 1 --epoch 60 --gender F --erase ";
  const std::string legacy = "legacy configure --mode 1 --epoch 60 --gender F --erase --simulate pendrel13 ";
  for (const std::string& command : {configure + "--simulate vivid ", legacy}) {
    SCOPED_TRACE(command);
    const Outcome rome = box.run(command + "--zone Europe/Rome");
    EXPECT_EQ(rome.Status, 0);
    EXPECT_TRUE(rome.Err.starts_with("Europe/Rome is kept as CEU, (GMT+01:00) Belgrade")) << rome.Err;
    const Outcome refused = box.run(command + "--zone Pacific/Chatham");
    EXPECT_EQ(refused.Status, 1);
    EXPECT_NE(refused.Err.find("time of Pacific/Chatham"), std::string::npos) << refused.Err;
    EXPECT_NE(refused.Err.find("; NEW (GMT+12:00) Auckland"), std::string::npos) << refused.Err;
    EXPECT_NE(box.run(command + "--zone Europe/Nowhere").Err.find("10019"), std::string::npos);
  }
  box.Environment = "TZ=Australia/Lord_Howe";
  const Outcome own = box.run(configure);
  EXPECT_NE(own.Err.find("time of Australia/Lord_Howe"), std::string::npos) << own.Err;
  EXPECT_NE(own.Err.find("nearest are AUE"), std::string::npos) << own.Err;
  for (const auto& [surroundings, words] : {std::pair{"TZ=No/Such", "TZ is \"No/Such\""},
                                            {"TZDIR=/nowhere", "the package tzdata. (failure 9998)"}}) {
    box.Environment = surroundings;
    EXPECT_NE(box.run("zones").Err.find(words), std::string::npos) << words;
    EXPECT_NE(box.run(configure).Err.find(words), std::string::npos) << words;
  }
}
