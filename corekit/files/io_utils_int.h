// What the files of the io_utils stem share among themselves. Paths here already hold app_path.
#pragma once

#include <string>
