// Textures that are loaded later: at once on demand, or one by one in the background.
//
// A background load goes: register (main thread) puts up a job, work (a worker) does its disk half,
// finalize (main thread) its OpenGL half, and clears it. A load that cannot wait ends the job early
// through the finisher.

#include "corekit/draw/tman.h"
#include "corekit/draw/tman_int.h"

void tman_class::force_load_tex(int ref) {
  const tman_lock hold(lock_);
  if (ref < 0 || ref >= static_cast<int>(ref_dat_.size())) return;
  const ref_dat_struct dat = ref_dat_[ref];
  const bool is_free = dat.load_time == tex_load_none && dat.flags == 0;
  if (dat.load_time == tex_load_now || is_free) return;
  load_texture_int(static_cast<tex_fail_mode>(dat.fail_mode), ref, dat.flags, dat.name);
}

void tman_class::load_all_scenery_texes() {
  for (int ref = 0;; ++ref) {
    std::string name;
    {
      // Not held over the load, which may have to let a worker in.
      const tman_lock hold(lock_);
      if (ref >= static_cast<int>(ref_dat_.size())) return;
      if (ref_dat_[ref].load_time != tex_load_scenery) continue;
      name = ref_dat_[ref].name;
    }
    tman_announce("Loading scenery texture " + name);
    force_load_tex(ref);
  }
}

int tman_class::num_remaining_async_texes() const {
  const tman_lock hold(lock_);
  int count = 0;
  for (const ref_dat_struct& dat : ref_dat_)
    count += dat.load_time == tex_load_scenery;
  return count;
}

int tman_class::load_scenery_async_register(tman_force_finish_obj* finisher) {
  const tman_lock hold(lock_);
  if (async_job_) return 0;
  for (int ref = 0; ref < static_cast<int>(ref_dat_.size()); ++ref) {
    const ref_dat_struct& dat = ref_dat_[ref];
    if (dat.load_time != tex_load_scenery) continue;
    if (!tman_check_flags(dat.flags, dat.name)) return 0;
    async_job_ =
        std::make_unique<tex_load_vars>(tex_load_vars{dat.fail_mode, ref, dat.flags, dat.name});
    async_ok_ = 0;
    async_finisher_ = finisher;
    return 1;
  }
  return 0;
}

void tman_class::load_scenery_async_work() {
  tex_load_vars* job = nullptr;
  {
    const tman_lock hold(lock_);
    job = async_job_.get();
  }
  if (!job) return;
  // The job stays until it is finalized, and nobody else looks into it before.
  const int ok = load_texture_io(*job);
  const tman_lock hold(lock_);
  async_ok_ = ok;
}

void tman_class::load_scenery_async_finalize() {
  const tman_lock hold(lock_);
  if (!async_job_) return;
  const std::unique_ptr<tex_load_vars> job = std::move(async_job_);
  async_finisher_ = nullptr;
  // The record may have been freed or given to another picture meanwhile.
  const ref_dat_struct& dat = ref_dat_[job->ref];
  if (dat.load_time == tex_load_scenery && dat.name == job->name) load_texture_ogl(*job, async_ok_);
}

// REQUIRES: the lock is held once.
void tman_class::finish_async_job() {
  tman_force_finish_obj* const finisher = async_finisher_;
  if (!finisher) return;
  // The worker needs the lock to hand over its result.
  UTL_critical_section_unlock(&lock_);
  finisher->force_finish();
  UTL_critical_section_lock(&lock_);
}
