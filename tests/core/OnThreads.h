#pragma once
// Work on other threads, waited for.

#include <barrier>
#include <thread>
#include <vector>

// Runs `work(number)` on `count` threads that begin together.
template <typename Work>
void OnThreads(int count, Work work) {
  std::barrier start(count);
  std::vector<std::thread> threads;
  for (int number = 0; number < count; ++number)
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      work(number);
    });
  for (std::thread& thread : threads) thread.join();
}

template <typename Work>
void OnAnotherThread(Work work) {
  std::thread(work).join();
}
