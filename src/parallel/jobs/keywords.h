// What the keywords of `pzeb` do; each reads its own arguments, up to and over ";".
#pragma once

namespace zeb {

void begin_keyword();  // begin_keyword.cpp
void again_keyword();
void get_keyword();  // collecting.cpp
void spy_keyword();
void getbufs_keyword();
void wait_keyword();  // monitoring.cpp
void gwait_keyword();
void stop_keyword();  // signalling.cpp
void kill_keyword();
void pause_keyword();
void resume_keyword();
void skipto_keyword();
void goto_keyword();
void setdata_keyword();  // disk_keyword.cpp

}  // namespace zeb
