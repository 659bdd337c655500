#pragma once

class QPainter;

// The 24 x 24 export actions: a table sheet for the CSV export of the current frame, and a film strip with
// a record dot (or, while recording, a stop square) for the frame recording.
namespace ExportIcons {

void drawExportCsv(QPainter &painter);
void drawRecord(QPainter &painter);
void drawStopRecording(QPainter &painter);

} // namespace ExportIcons
