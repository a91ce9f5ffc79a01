// Makes a change that SQLite committed survive a power cut.
#ifndef QORN_GATEWAY_HOST_DURABLE_STORAGE_H_
#define QORN_GATEWAY_HOST_DURABLE_STORAGE_H_

namespace gateway {

// The configuration's key: "on", or off with any other value and when it is absent.
inline constexpr char kDurableStorageKey[] = "gateway_durable_storage";

// SQLite commits by deleting its rollback journal, and with its own settings it does not sync the
// folder afterwards: a power cut can bring the journal back, and the next connection rolls the
// change back. From this call on, each connection that is opened in this process syncs the folder
// after it deletes a journal; what a component does with SQLite stays as it is.
//
// Call it before any component is loaded; a second call does nothing. False if SQLite cannot be
// initialised. Not thread-safe. It lasts as long as the process: a connection may outlive the host.
bool UseDurableStorage();

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_DURABLE_STORAGE_H_
