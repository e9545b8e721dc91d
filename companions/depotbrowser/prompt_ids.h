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
#define CONTROL_EXAMPLE 1007
#define CONTROL_SHOW_PASSWORD 1008
#define CONTROL_CAPS_LOCK 1009
