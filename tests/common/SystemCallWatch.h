#pragma once
// Finds system calls, of which an audio thread makes none. Sanitizers make some of their own, so this is for
// programs without them.

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <stdexcept>
#include <string>

// From here on the kernel ends this process at any system call but that of its end. False if it will not.
inline bool ForbidSystemCalls() {
  sock_filter rules[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                         BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit, 0, 1),
                         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
                         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS)};
  const sock_fprog program = {sizeof rules / sizeof *rules, rules};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// Runs the function in a child of this process, so that nothing that it changes is seen here. Raises
// std::runtime_error when the child ends in another way.
template <typename Function>
bool MakesSystemCalls(Function function) {
  const pid_t child = fork();
  if (child == 0) {
    if (!ForbidSystemCalls()) _exit(1);
    function();
    syscall(SYS_exit, 0);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) throw std::runtime_error("no child process");
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGSYS) return true;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw std::runtime_error("the child process ended with the status " + std::to_string(status));
  return false;
}
