#pragma once

#include <QByteArray>
#include <QString>

#include "platform/include/SyncInterface.h"

/// A SyncInterface and a QtTunnel that record every call with the process's Recorder and answer as
/// ordered. A call succeeds with 7, or with the value that has the name of the operation
/// (Recorder::SetValue); it gives 0 where the recorder fails it. Numeric outputs are the recorder's
/// values "id", "count", "width", "height", "period", "brightness", "texture", "ratio",
/// "ratioWithTexture", "exposure" and "gain", set only with 7.
namespace Korvex3Sync::tests::recorder {

/// The client of the service that exists now, to emit its signals; null if there is none.
SyncInterface* TheSyncInterface();

/// The text that every query for a text gives, also as the name of each camera.
void SetServiceText(const QString& text);

/// What the segment of this name holds.
void SetSegment(const QString& name, const QByteArray& bytes);
/// Forgets the text and all segments.
void ResetService();

}  // namespace Korvex3Sync::tests::recorder
