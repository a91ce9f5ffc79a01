#ifndef QORN_DEVCLOUD_CONTROL_OPENAPI_H_
#define QORN_DEVCLOUD_CONTROL_OPENAPI_H_

namespace devcloud {

// The content of openapi.json, the description of the control API, compiled into the program.
extern const char* const kOpenApiJson;

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_OPENAPI_H_
