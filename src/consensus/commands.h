// Handlers of the consensus commands.
#pragma once

namespace zeb {

void nelsen_command();
void majority_command();
void freqdifs_command();
void comcomp_command();
void prunnelsen_command();
void prunmajor_command();
void pruncom_command();
void rfreqs_command();

}  // namespace zeb
