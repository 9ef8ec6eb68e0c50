// Which platform the job at hand is for.
#pragma once

// The target_platform that the copy at dest_dir_path was installed for, as what the manifest ships
// for one platform alone and what lies there tell; 0 when nothing does. REQUIRES: a manifest is
// loaded. One look at the disk for every such file. Main thread.
int platform_of_copy();

// Sets stg.target_os: a copy keeps the platform that it has, so that no update mixes two; a new
// one, or one that does not tell, is for stg.new_copy_os. Main thread.
void settle_platform();
