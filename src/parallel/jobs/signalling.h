// Keywords of `pzeb` that steer jobs by signals. Each reads its own arguments, up to and over ";".
#pragma once

namespace zeb {

void stop_keyword();
void kill_keyword();
void pause_keyword();
void resume_keyword();
void skipto_keyword();
void goto_keyword();

}  // namespace zeb
