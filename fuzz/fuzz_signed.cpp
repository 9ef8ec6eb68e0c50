// Fuzz target of what comes with a signature: a statement, a signature, the list before it, a set
// of texts. What is read of a statement says the same once more when it is written.

#include "corekit/files/io_set.h"
#include "corekit/files/sign.h"
#include "fuzz/fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  sign_public_key key;
  sign_read_key("RWQD0MnvBXAU5gcYVDbKd1MmBHQ2BLcNw88CW1imG9F82ILtTLgndV8J", key);
  const sign_public_key keys[] = {key};

  sign_statement statement, again;
  if (sign_read_fields(text, statement)) {
    fuzz_check(sign_read_fields(sign_statement_text(statement), again));
    fuzz_check(sign_statement_text(again) == sign_statement_text(statement));
  }
  sign_key_id by;
  sign_read_statement(text, sign_of_release, keys, statement);
  sign_check("what is signed\n", text, keys, by);
  fuzz_check(text.starts_with(sign_list_body(text)));

  set_entry entries[] = {{"directory.txt", 1000}, {"directory.sum", 1000}, {"directory.sig", 1000}};
  if (io_read_set(data, size, entries) == single_ok) {
    for (const set_entry& entry : entries)
      fuzz_check(entry.is_there && entry.bytes.size() <= entry.most);
  }
  return 0;
}
