// One caller at a time.
//
// The library keeps process-wide state (the open session, the sequence field,
// the trace log position, the state files) and its exported functions call one
// another. Every exported function therefore takes one process-wide recursive
// lock on entry and holds it until it returns:
//
//   ORBELAN_API unsigned short E4Xxx(...) {
//     ORB_LOCK();
//     ...
//
// A single calling thread never waits on it, so its behaviour is unchanged;
// several threads are served one whole call after the other.
#pragma once

#include <pthread.h>

namespace orbelan {

// A plain recursive pthread mutex, constant-initialised: it exists before any
// constructor runs and is never destroyed, so a call made from an
// application's exit handler still finds it usable (a function-local
// std::recursive_mutex would be destroyed at exit before such handlers run).
inline pthread_mutex_t trava_global = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;

class Chamada {
 public:
  Chamada() { pthread_mutex_lock(&trava_global); }
  ~Chamada() { pthread_mutex_unlock(&trava_global); }
  Chamada(const Chamada&) = delete;
  Chamada& operator=(const Chamada&) = delete;
};

}  // namespace orbelan

// Taken first thing in every exported function.
#define ORB_LOCK() const ::orbelan::Chamada orb_chamada_exclusiva_ {}
