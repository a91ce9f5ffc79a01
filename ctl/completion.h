// Scripts by which a shell completes qornctl's options and commands.
#ifndef QORN_CTL_COMPLETION_H_
#define QORN_CTL_COMPLETION_H_

#include <string>
#include <vector>

namespace ctl {

// Carries out "completion SHELL" without a gateway, and returns the exit status.
int PrintCompletion(const std::vector<std::string>& command);

}  // namespace ctl

#endif  // QORN_CTL_COMPLETION_H_
