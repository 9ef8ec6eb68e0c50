// One thread a processor, as unpacking and hashing take most of a transfer's time. Main thread but
// for do_it. Writes unpack_pool.

#include "Installer-f/engine/utils_unpack.h"

#include <fcntl.h>

#include <cerrno>

#include "Installer-f/engine/utils_grab_state.h"
#include "corekit/base/UTL_thread.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"

UTL_worker_threads* unpack_pool = nullptr;

void unpack_task::do_it() {
  const place_order order = {path, sig_want, most, sum, may_replace};
  if (archive_path.empty()) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(archive.data());
    result = place_archive(*gate, bytes, archive.size(), order);
    return;
  }
  const io_handle opened(open((app_path + archive_path).c_str(), O_RDONLY | O_CLOEXEC));
  result = opened ? place_archive_file(*gate, opened.get(), most_archive, order)
                  : place_result{place_unread, errno};
  remove_temp_file(archive_path);
}

int unpack_task::check_error(std::string& message) {
  message.clear();
  return result.code;
}

void unpack_enqueue(std::unique_ptr<unpack_task> task) {
  if (!unpack_pool) unpack_pool = new UTL_worker_threads(UTL_count_processors(), stream_limit);
  unpack_pool->enqueue_task(task.release());
}

std::unique_ptr<unpack_task> unpack_take_finished() {
  UTL_work_task* const task = unpack_pool ? unpack_pool->check_retired_tasks() : nullptr;
  return std::unique_ptr<unpack_task>(static_cast<unpack_task*>(task));
}

std::unique_ptr<unpack_task> unpack_wait_finished() {
  UTL_work_task* const task = unpack_pool ? unpack_pool->wait_retired_tasks() : nullptr;
  return std::unique_ptr<unpack_task>(static_cast<unpack_task*>(task));
}

int unpack_descriptor() {
  return unpack_pool ? unpack_pool->retired_descriptor() : -1;
}

void unpack_end() {
  delete unpack_pool;
  unpack_pool = nullptr;
}
