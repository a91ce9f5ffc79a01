// How a program's output looks, by its environment.
#ifndef QORN_GATEWAY_OUTPUT_STYLE_H_
#define QORN_GATEWAY_OUTPUT_STYLE_H_

#include "gateway/output/printer.h"

namespace gateway {

// Colours for terminals alone, and none with NO_COLOR, a dumb terminal or JSON.
PrinterStyle MakeStyle(bool json, bool show_secrets);

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_STYLE_H_
