/* The numbers that the resources and the code share for what is kept of edits that could not be
 * stored. */
#pragma once

#define DIALOG_KEPT 203

/* In the browse dialog. */
#define CONTROL_KEPT_LINE 1400

#define CONTROL_KEPT_LIST_LABEL 1401
#define CONTROL_KEPT_LIST 1402
#define CONTROL_KEPT_DIFFERENCES 1403
#define CONTROL_KEPT_MERGE 1404
#define CONTROL_KEPT_REPLACE 1405
#define CONTROL_KEPT_EXPORT 1406
#define CONTROL_KEPT_DISCARD 1407
#define CONTROL_KEPT_MESSAGE 1408
#define CONTROL_KEPT_VALUES_LABEL 1409
#define CONTROL_KEPT_VALUES 1410
