#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

namespace {

namespace fs = std::filesystem;

struct Result {
  int status = -1;
  std::string output;
};

std::string readAll(FILE* pipe) {
  std::string text;
  for (int c = 0; (c = std::fgetc(pipe)) != EOF;) text.push_back(static_cast<char>(c));
  return text;
}

// Runs a shell command line and collects both of its outputs.
Result shell(const std::string& line) {
  FILE* const pipe = popen(  // NOLINT(cert-env33-c): the command lines are this file's own
      ("exec 2>&1; " + line).c_str(), "r");
  Result result;
  result.output = readAll(pipe);
  const int status = pclose(pipe);
  if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
  return result;
}

const std::string sim = MVX2_SIM;

Result simulate(const std::string& command, const std::string& options = "") {
  return shell(sim + " run " + options + " -- " + command);
}

bool mentions(const Result& result, const std::string& text) {
  return result.output.find(text) != std::string::npos;
}

// Whether a process has ended, even if nobody has taken note of it yet.
bool hasEnded(pid_t process) {
  std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
  std::string text;
  std::getline(stat, text);
  const std::size_t name = text.rfind(") ");
  return name == std::string::npos || text[name + 2] == 'Z' || text[name + 2] == 'X';
}

// Waits for as long as it takes on a slow machine; a process that never ends fails the test.
bool awaitEnd(pid_t process) {
  for (int i = 0; i < 3000 && !hasEnded(process); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return hasEnded(process);
}

// A simulation in the background: its command writes lines that the test reads.
class Background {
 public:
  explicit Background(const std::string& script) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    m_process = fork();
    if (m_process == 0) {
      dup2(ends[1], STDOUT_FILENO);
      close(ends[0]);
      close(ends[1]);
      execl(MVX2_SIM, MVX2_SIM, "run", "--", "sh", "-c", script.c_str(), nullptr);
      _exit(99);
    }
    close(ends[1]);
    m_output = fdopen(ends[0], "r");
  }
  Background(const Background&) = delete;
  Background(Background&&) = delete;
  Background& operator=(const Background&) = delete;
  Background& operator=(Background&&) = delete;
  ~Background() {
    // Nothing to do when the test has waited for it.
    if (m_process != 0) {
      kill(m_process, SIGKILL);
      waitpid(m_process, nullptr, 0);
    }
    static_cast<void>(std::fclose(m_output));
  }

  std::string line() {
    char text[200] = {};
    if (std::fgets(text, sizeof text, m_output) == nullptr) return "";
    const std::string all = text;
    return all.substr(0, all.find('\n'));
  }
  void send(int signal) const { kill(m_process, signal); }
  int wait() {
    int status = 0;
    waitpid(std::exchange(m_process, 0), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t m_process = 0;
  FILE* m_output = nullptr;
};

// A directory whose name a daemon's configuration could not hold, removed with all that is in it.
class Directory {
 public:
  Directory() {
    char name[] = "/tmp/mvx2 sim,test (XXXXXX";
    m_path = mkdtemp(name);
    chmod(name, 0755);
  }
  Directory(const Directory&) = delete;
  Directory(Directory&&) = delete;
  Directory& operator=(const Directory&) = delete;
  Directory& operator=(Directory&&) = delete;
  ~Directory() { fs::remove_all(m_path); }

  const fs::path& path() const { return m_path; }

 private:
  fs::path m_path;
};

std::string quoted(const fs::path& path) { return "'" + path.string() + "'"; }

// Copies the program, and its modules where they belong beside it.
fs::path install(const fs::path& directory, bool withModules) {
  fs::create_directories(directory / "bin");
  fs::copy_file(sim, directory / "bin" / "mvx2-sim");
  const fs::path modules = fs::path(MVX2_SIM_LIBDIR) / "mvx2-sim";
  fs::create_directories(directory / modules);
  if (withModules) fs::copy(fs::path(sim).parent_path().parent_path() / modules, directory / modules);
  return directory / "bin" / "mvx2-sim";
}

}  // namespace

TEST(MVX2SimRun, PassesTheExitStatusOn) {
  EXPECT_EQ(simulate("true").status, 0);
  EXPECT_EQ(simulate("sh -c 'exit 7'").status, 7);
}

TEST(MVX2SimRun, PassesASignalOnAs128AndItsNumber) {
  EXPECT_EQ(simulate("sh -c 'kill -KILL $$'").status, 128 + SIGKILL);
}

TEST(MVX2SimRun, SaysThatThereIsNoSuchCommand) {
  const Result result = simulate("/nonexistent/command");
  EXPECT_EQ(result.status, 127);
  EXPECT_TRUE(mentions(result, "cannot execute /nonexistent/command")) << result.output;
}

TEST(MVX2SimRun, SaysThatACommandCannotBeExecuted) { EXPECT_EQ(simulate("/etc/passwd").status, 126); }

TEST(MVX2SimRun, SaysThatItNeedsACommand) {
  const Result result = shell(sim + " run");
  EXPECT_EQ(result.status, 125);
  EXPECT_TRUE(mentions(result, "which command?")) << result.output;
}

TEST(MVX2SimRun, TellsItsCommandThatItIsSimulated) { EXPECT_EQ(simulate("printenv MVX2_SIM").output, "1\n"); }

TEST(MVX2SimRun, LeavesArgumentsAndInputAlone) {
  EXPECT_EQ(shell("echo hello | " + sim + " run -- sh -c 'cat; echo \"$1\"' x '-- a  b'").output,
            "hello\n-- a  b\n");
}

TEST(MVX2SimRun, ShowsItsReaders) {
  EXPECT_EQ(simulate(sim + " info").output,
            "sam: ACS SAM 00 00\n"
            "sam key: 000102030405060708090A0B0C0D0E0F\n"
            "sam serial: 04112233445566\n"
            "terminal: KRV MVX3 Terminal 00 00\n");
}

TEST(MVX2SimRun, TakesNamesKeyAndSerialNumber) {
  const Result result = simulate(sim + " info",
                                 "--terminal-name 'Velmorin X' --sam-name 'CCID SAM' "
                                 "--sam-key c0c1c2c3c4c5c6c7c8c9cacbcccdcecf --sam-serial 04aabbccddeeff");
  EXPECT_EQ(result.output,
            "sam: CCID SAM 00 00\n"
            "sam key: C0C1C2C3C4C5C6C7C8C9CACBCCCDCECF\n"
            "sam serial: 04AABBCCDDEEFF\n"
            "terminal: Velmorin X 00 00\n");
}

TEST(MVX2SimRun, RefusesAKeyASerialNumberOrANameThatDoesNotFit) {
  for (const char* option :
       {"--sam-key 00", "--sam-serial 0411223344556g", "--terminal-name ''", "--terminal-name 'a<b'"})
    EXPECT_EQ(simulate("true", option).status, 125) << option;
}

TEST(MVX2SimRun, LeavesReadersOut) {
  EXPECT_EQ(simulate(sim + " info", "--no-sam").output, "terminal: KRV MVX3 Terminal 00 00\n");
  EXPECT_EQ(simulate(sim + " info", "--no-sam --no-terminal").output, "");
}

TEST(MVX2SimRun, EndsItsDaemon) {
  const Result result = simulate("cat /run/pcscd/pcscd.pid");
  EXPECT_TRUE(hasEnded(std::stoi(result.output))) << result.output;
}

TEST(MVX2SimRun, EndsItsDaemonAndItsCommandWhenItIsKilled) {
  Background simulation("head -n 1 /run/pcscd/pcscd.pid; echo $$; exec sleep 1000");
  const pid_t daemon = std::stoi(simulation.line());
  const pid_t command = std::stoi(simulation.line());
  ASSERT_GT(daemon, 0);
  ASSERT_GT(command, 0);
  EXPECT_FALSE(hasEnded(daemon));
  simulation.send(SIGKILL);
  EXPECT_EQ(simulation.wait(), -SIGKILL);
  EXPECT_TRUE(awaitEnd(daemon));
  EXPECT_TRUE(awaitEnd(command));
}

TEST(MVX2SimRun, PassesASignalThatItGetsToItsCommand) {
  Background simulation("echo ready; exec sleep 1000");
  ASSERT_EQ(simulation.line(), "ready");
  simulation.send(SIGTERM);
  EXPECT_EQ(simulation.wait(), 128 + SIGTERM);
}

TEST(MVX2SimRun, LeavesNothingBehind) {
  const bool daemonDirectory = fs::exists("/run/pcscd");
  simulate("true");
  EXPECT_EQ(fs::exists("/run/pcscd"), daemonDirectory);
  EXPECT_FALSE(fs::exists("/run/pcscd/mvx2-sim"));
}

TEST(MVX2SimRun, RunsBesideAnother) {
  const Directory directory;
  const std::string go = quoted(directory.path() / "go");
  Background other(sim + " set credit 111; echo ready; until test -e " + go + "; do sleep 0.01; done; " +
                   sim + " get credit");
  ASSERT_EQ(other.line(), "ready");
  EXPECT_EQ(simulate("sh -c '" + sim + " set credit 222; " + sim + " get credit'").output, "222\n");
  shell("touch " + go);
  EXPECT_EQ(other.line(), "111");
  EXPECT_EQ(other.wait(), 0);
}

TEST(MVX2SimRun, DoesNotDisturbADaemonThatRuns) {
  const Result result = simulate("sh -c '" + sim + " set credit 111; " + sim + " run -- " + sim +
                                 " get credit; " + sim + " get credit'");
  EXPECT_EQ(result.output, "1250\n111\n");
}

TEST(MVX2SimRun, WorksForANormalUser) {
  const std::string asUser =
      getuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups -- " : std::string();
  if (shell(asUser + "test -x " + sim).status != 0) GTEST_SKIP() << "a normal user cannot reach the build";
  if (shell(asUser + "unshare --user true").status != 0) GTEST_SKIP() << "user namespaces are forbidden here";
  const Result result = shell(asUser + sim + " run -- sh -c 'id -u; " + sim + " reader out; " + sim +
                              " reader in; " + sim + " daemon restart; " + sim + " get credit; exit 3'");
  EXPECT_EQ(result.output, (getuid() == 0 ? "65534" : std::to_string(getuid())) + "\n1250\n");
  EXPECT_EQ(result.status, 3);
}

TEST(MVX2SimRun, FindsItsModulesWhereverItIsInstalled) {
  const Directory directory;
  const fs::path program = install(directory.path(), true);
  EXPECT_EQ(shell(quoted(program) + " run -- " + quoted(program) + " get credit").output, "1250\n");
}

TEST(MVX2SimRun, SaysWhichModuleIsMissing) {
  const Directory directory;
  const Result result = shell(quoted(install(directory.path(), false)) + " run -- true");
  EXPECT_EQ(result.status, 125);
  EXPECT_TRUE(mentions(result, "mvx2_sim_usb.so")) << result.output;
}

TEST(MVX2SimRun, SaysWhichPackageIsMissing) {
  if (shell("unshare -m true").status != 0)
    GTEST_SKIP() << "hiding the daemon needs root and a private mount";
  const Result result =
      shell("unshare -m sh -c 'mount --bind /dev/null /usr/sbin/pcscd && " + sim + " run -- true'");
  EXPECT_EQ(result.status, 125);
  EXPECT_TRUE(mentions(result, "install the package pcscd")) << result.output;
}

TEST(MVX2SimControl, WorksOnlyInsideASimulation) {
  for (const char* line :
       {"get credit", "set credit 1", "fault clear", "card in", "reader in", "daemon start", "info"}) {
    const Result result = shell(sim + " " + line);
    EXPECT_EQ(result.status, 125) << line;
    EXPECT_TRUE(mentions(result, "only inside a simulation")) << result.output;
  }
}

TEST(MVX2SimControl, RefusesWhatTheReaderRefuses) {
  for (const char* line :
       {"set credit x", "set nothing 1", "get nothing", "fault nothing", "fault transmit 0"})
    EXPECT_EQ(simulate(sim + " " + line).status, 125) << line;
}

TEST(MVX2SimControl, RefusesAReaderThatIsNotSimulated) {
  EXPECT_EQ(simulate(sim + " reader out sam", "--no-sam").status, 125);
  EXPECT_EQ(simulate(sim + " get -r sam key", "--no-sam").status, 125);
}

TEST(MVX2SimControl, SaysThatAReaderIsOut) {
  const std::string out = "sh -c '" + sim + " reader out; timeout 20 " + sim + ' ';
  for (const char* line : {"get credit", "set credit 1", "fault clear", "card in"}) {
    std::string command = out;
    const Result result = simulate(command.append(line).append("'"));
    EXPECT_EQ(result.status, 125) << line;
    EXPECT_TRUE(mentions(result, "the reader is out: mvx2-sim reader in terminal")) << result.output;
  }
}

TEST(MVX2SimControl, SetsNegativeNumbersAndLists) {
  EXPECT_EQ(simulate("sh -c '" + sim + " set value -5; " + sim + " get value'").output, "-5\n");
  EXPECT_EQ(simulate("sh -c '" + sim + " set listgrp 3 7 12; " + sim + " get listgrp'").output, "3 7 12\n");
}
