// Worker threads that take tasks from the thread that makes them.
//
// There are two tasks more than threads. The calling thread fills a free one and submits it; a
// worker that is idle takes it, and it is free again when the work is done. Both sides sleep while
// there is nothing for them. With one thread there is no worker: submit() does the work.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace velk::run {

template <class Task>
class Workers {
 public:
  /// `work(task, worker)` is called by worker 0, 1, ... Throws std::system_error when a thread
  /// can't be started.
  Workers(int threads, std::function<void(Task&, int)> work)
      : work_(std::move(work)), tasks_(threads < 2 ? 1 : static_cast<std::size_t>(threads) + 2) {
    for (Task& task : tasks_) free_.push_back(&task);
    try {
      for (int n = 0; threads >= 2 && n < threads; ++n) {
        threads_.emplace_back([this, n] { live(n); });
      }
    } catch (...) {
      stop();
      throw;
    }
  }
  ~Workers() { stop(); }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  /// The task that is filled next; the same one until it is submitted. Throws what a worker threw.
  Task& freeTask() {
    if (filling_ == nullptr) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return !free_.empty() || failure_; });
      rethrow();
      filling_ = free_.front();
      free_.pop_front();
    }
    return *filling_;
  }

  /// Has the task that freeTask() returned worked on. Throws what a worker threw.
  void submit() {
    Task* const task = std::exchange(filling_, nullptr);
    if (threads_.empty()) {
      work_(*task, 0);
      free_.push_back(task);
      return;
    }
    const std::lock_guard lock(mutex_);
    rethrow();
    waiting_.push_back(task);
    changed_.notify_all();
  }

  /// Waits until all work is done and the threads have ended. Throws what a worker threw.
  void finish() {
    {
      const std::lock_guard lock(mutex_);
      isLast_ = true;
      changed_.notify_all();
    }
    join();
    rethrow();
  }

 private:
  void live(int n) {
    for (;;) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return !waiting_.empty() || isLast_ || failure_; });
      if (failure_ || waiting_.empty()) return;
      Task* const task = waiting_.front();
      waiting_.pop_front();
      lock.unlock();
      std::exception_ptr failure;
      try {
        work_(*task, n);
      } catch (...) {
        failure = std::current_exception();
      }
      lock.lock();
      noteFailure(failure);
      free_.push_back(task);
      changed_.notify_all();
    }
  }

  // Keeps the first failure of all.
  void noteFailure(const std::exception_ptr& failure) {
    if (failure_ == nullptr) failure_ = failure;
  }

  // Ends the threads without doing what waits.
  void stop() {
    {
      const std::lock_guard lock(mutex_);
      waiting_.clear();
      isLast_ = true;
      changed_.notify_all();
    }
    join();
  }

  void join() {
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
  }

  void rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

  std::function<void(Task&, int)> work_;
  std::vector<Task> tasks_;
  Task* filling_ = nullptr;
  std::vector<std::thread> threads_;

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::deque<Task*> free_;
  std::deque<Task*> waiting_;
  bool isLast_ = false;  // whether no task will be submitted any more
  std::exception_ptr failure_;
};

}  // namespace velk::run
