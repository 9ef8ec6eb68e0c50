// Makes time go by faster in a program that knows nothing of it: loaded ahead of the C library
// (LD_PRELOAD), it has the clock run HOURS_FASTER times as fast and every wait end as much sooner,
// so that days of a window go by in minutes, with as many frames as days have. HOURS_AHEAD is a
// number of seconds that the clock leaps, once, five true seconds after it was first read.
//
// Any thread; writes nothing.

#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>

namespace {

constexpr double second = 1e9;  // nanoseconds

double number(const char* name, double otherwise) {
  const char* const text = std::getenv(name);
  return text ? std::atof(text) : otherwise;
}

double faster() {
  static const double times = number("HOURS_FASTER", 1);
  return times;
}

double true_now() {
  timespec now = {};
  syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) * second + static_cast<double>(now.tv_nsec);
}

double of_timespec(const timespec& time) {
  return static_cast<double>(time.tv_sec) * second + static_cast<double>(time.tv_nsec);
}

timespec as_timespec(double nanoseconds) {
  const auto whole = static_cast<long>(nanoseconds);
  return {whole / 1'000'000'000, whole % 1'000'000'000};
}

double hastened_now() {
  static const double first = true_now(), ahead = number("HOURS_AHEAD", 0) * second;
  const double since = true_now() - first;
  return first + since * faster() + (since > 5 * second ? ahead : 0);
}

// A moment of the hastened clock, by the true one. Those of the calendar are as they are.
timespec true_moment(const timespec& when) {
  constexpr double oldest_calendar = 1e9 * second;
  const double at = of_timespec(when);
  return at > oldest_calendar ? when : as_timespec(true_now() + (at - hastened_now()) / faster());
}

template <class Call>
Call real(const char* name) {
  return reinterpret_cast<Call>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* out) noexcept {
  if (clock != CLOCK_MONOTONIC && clock != CLOCK_MONOTONIC_RAW)
    return static_cast<int>(syscall(SYS_clock_gettime, clock, out));
  *out = as_timespec(hastened_now());
  return 0;
}

int ppoll(pollfd* lines, nfds_t count, const timespec* timeout, const sigset_t* signals) {
  static const auto call = real<decltype(&::ppoll)>("ppoll");
  const timespec shorter = timeout ? as_timespec(of_timespec(*timeout) / faster()) : timespec{};
  return call(lines, count, timeout ? &shorter : nullptr, signals);
}

int poll(pollfd* lines, nfds_t count, int milliseconds) {
  const timespec timeout = as_timespec(milliseconds * (second / 1000));
  return ppoll(lines, count, milliseconds < 0 ? nullptr : &timeout, nullptr);
}

int __poll_chk(pollfd* lines, nfds_t count, int milliseconds, size_t) {
  return poll(lines, count, milliseconds);
}

int nanosleep(const timespec* time, timespec* left) {
  const timespec shorter = as_timespec(of_timespec(*time) / faster());
  return static_cast<int>(syscall(SYS_nanosleep, &shorter, left));
}

int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* lock,
                           const timespec* until) {
  static const auto call = real<decltype(&::pthread_cond_timedwait)>("pthread_cond_timedwait");
  const timespec when = true_moment(*until);
  return call(condition, lock, &when);
}

int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* lock, clockid_t clock,
                           const timespec* until) {
  static const auto call = real<decltype(&::pthread_cond_clockwait)>("pthread_cond_clockwait");
  const timespec when = true_moment(*until);
  return call(condition, lock, clock, &when);
}

}  // extern "C"
