/* The numbers that the resources and the code of the credentials dialog share. */
#pragma once

#define DIALOG_PROMPT 200

#define CONTROL_INSTRUCTION 1000
#define CONTROL_SERVER_LABEL 1001
#define CONTROL_SERVER 1002
#define CONTROL_USER_LABEL 1003
#define CONTROL_USER 1004
#define CONTROL_PASSWORD_LABEL 1005
#define CONTROL_PASSWORD 1006

#define TEXT_TITLE 520
#define TEXT_SERVER 521
#define TEXT_USER 522
#define TEXT_PASSWORD 523
#define TEXT_OK 524
#define TEXT_CANCEL 525
#define TEXT_INSTRUCTION 526
