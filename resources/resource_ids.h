// The numbers of the texts in the localized resource libraries. Read by the resource compiler too.
//
// A "%s" stands for what the comment says, in that order; each language keeps the same ones.
#pragma once

// Names of copies of files.
#define IDS_COPY_PREFIX_NAME \
    500                         // %s: nothing; %s: the whole name. Text before the first %s is kept
#define IDS_COPY_DASH_NAME 501  // %s: the name without its extension; %s: the extension

// The prompt for a user name and a password.
#define IDS_CREDENTIALS_TITLE 520
#define IDS_CREDENTIALS_SERVER 521
#define IDS_CREDENTIALS_USER 522
#define IDS_CREDENTIALS_PASSWORD 523
#define IDS_OK 524
#define IDS_CANCEL 525
#define IDS_CREDENTIALS_INSTRUCTION 526
#define IDS_CREDENTIALS_CHARACTERS 527
// Why the user is asked again, in place of the instruction, and what would help.
#define IDS_CREDENTIALS_REFUSED 528
#define IDS_CREDENTIALS_UNREACHABLE 529
#define IDS_CREDENTIALS_STRONGER 530
#define IDS_CREDENTIALS_SECURED 531
#define IDS_CREDENTIALS_RIGHTS 532
#define IDS_CREDENTIALS_UNWILLING 533
#define IDS_CREDENTIALS_BUSY 534

// The dialog in which a file is chosen.
#define IDS_BROWSE_OPEN 540
#define IDS_BROWSE_SAVE_AS 541
#define IDS_BROWSE_SAVE 542
#define IDS_BROWSE_HELP 543
#define IDS_BROWSE_FILE_NAME 544
#define IDS_BROWSE_FILE_TYPE 545
#define IDS_BROWSE_ALL_FILES 546
#define IDS_BROWSE_COLUMN_NAME 547
#define IDS_BROWSE_COLUMN_TYPE 548
#define IDS_BROWSE_COLUMN_SIZE 549
#define IDS_BROWSE_COLUMN_DATE 550
#define IDS_BROWSE_RENAME 551
#define IDS_BROWSE_DELETE 552
#define IDS_BROWSE_MAKE_COPY 553
#define IDS_BROWSE_NEW_FOLDER 554
#define IDS_BROWSE_STOP 555
#define IDS_BROWSE_CONFIRM_DELETE 556     // %s: the name of the file or folder
#define IDS_BROWSE_CONFIRM_OVERWRITE 557  // %s: the name of the file
#define IDS_BROWSE_NOT_WRITABLE 558       // %s: the place that was chosen
#define IDS_BROWSE_LOADING 559
#define IDS_BROWSE_FOLDER 560
#define IDS_BROWSE_SKEIN_FILE 561
#define IDS_BROWSE_KICKOFF_FILE 562
#define IDS_BROWSE_SESSION_FILE 563
#define IDS_BROWSE_OTHER_FILE 564  // %s: the extension in capitals
#define IDS_BROWSE_KILOBYTES 565   // %s: a number
#define IDS_BROWSE_DEPOTS 566
#define IDS_BROWSE_FILES 567
#define IDS_BROWSE_EMPTY 568
#define IDS_BROWSE_STOPPED 569
#define IDS_BROWSE_NOT_FOUND 570               // %s: what was typed
#define IDS_BROWSE_CANNOT_OPEN 571             // %s: the folder
#define IDS_BROWSE_EXISTS 572                  // %s: the name
#define IDS_BROWSE_BAD_NAME 573                // %s: what was typed
#define IDS_BROWSE_FAILED 574                  // %s: the name of the file or folder
#define IDS_BROWSE_CONFIRM_DELETE_SEVERAL 575  // %s: how many
#define IDS_BROWSE_WORKING 576
#define IDS_BROWSE_OUTSIDE 577       // %s: what was typed
#define IDS_BROWSE_HIDDEN 578        // %s: a pattern; %s: how many files
#define IDS_BROWSE_DELETE_WHOLE 579  // what becomes of folders
#define IDS_BROWSE_DELETE_HELD 580   // %s: how many files; %s: how many folders
#define IDS_BROWSE_DELETE_FINAL 581
#define IDS_BROWSE_DELETE_RECYCLED 582
#define IDS_BROWSE_BACK 583
#define IDS_BROWSE_FORWARD 584
#define IDS_BROWSE_UP 585
#define IDS_BROWSE_SEARCH 586
#define IDS_BROWSE_SEARCHING 587
#define IDS_BROWSE_NOTHING_FOUND 588   // %s: what was searched for
#define IDS_BROWSE_SEARCH_PARTLY 589   // %s: how many
#define IDS_BROWSE_SEARCH_LIMIT 590    // %s: how many
#define IDS_BROWSE_COUNT 591           // %s: how many
#define IDS_BROWSE_COUNT_SELECTED 592  // %s: how many; %s: how many of them
#define IDS_BROWSE_GO_TO_FOLDER 593
#define IDS_BROWSE_REFRESH 594
#define IDS_BROWSE_FOLDERS_ABOVE 595
#define IDS_BROWSE_SUGGESTIONS 596

// What is kept of edits that could not be stored, in the browse dialog.
#define IDS_KEPT_LINE 640  // %s: how many
#define IDS_KEPT_TITLE 641
#define IDS_KEPT_DIFFERENCES 642
#define IDS_KEPT_MERGE 643
#define IDS_KEPT_REPLACE 644
#define IDS_KEPT_EXPORT 645
#define IDS_KEPT_DISCARD 646
#define IDS_KEPT_VALUES 647
#define IDS_KEPT_CLOSE 648
#define IDS_KEPT_COLUMN_ENTRY 649
#define IDS_KEPT_COLUMN_STATE 650
#define IDS_KEPT_COLUMN_WHY 651
#define IDS_KEPT_COLUMN_SECTION 652
#define IDS_KEPT_COLUMN_BASE 653
#define IDS_KEPT_COLUMN_STORED 654
#define IDS_KEPT_COLUMN_OURS 655
#define IDS_KEPT_WAITING 656
#define IDS_KEPT_RECOVERED 657
#define IDS_KEPT_WAITS 658
#define IDS_KEPT_OTHER_VERSION 659
#define IDS_KEPT_ASK_REPLACE 660    // %s: the entry
#define IDS_KEPT_ASK_CONFLICTS 661  // %s: the values
#define IDS_KEPT_RESTORED 662       // %s: the name of the kept copy
#define IDS_KEPT_EXPORTED 663       // %s: the name of the kept copy
#define IDS_KEPT_DISCARDED 664      // %s: the name of the kept copy
#define IDS_KEPT_GONE 665           // %s: the entry
#define IDS_KEPT_CHANGED 666        // %s: the name of the kept copy
#define IDS_KEPT_CANNOT_MERGE 667   // %s: the name of the kept copy
#define IDS_KEPT_FAILED 668         // %s: the name of the kept copy
#define IDS_KEPT_STAYS 669          // %s: the name of the kept copy
#define IDS_KEPT_NO_PROFILE 670
#define IDS_KEPT_NO_DIFFERENCE 671

// More of the prompt for a user name and a password.
#define IDS_CREDENTIALS_SHOW 597
#define IDS_CREDENTIALS_CAPS_LOCK 598
#define IDS_CREDENTIALS_EXAMPLE 599
#define IDS_CREDENTIALS_STORE 690
#define IDS_CREDENTIALS_OPEN 691
#define IDS_CREDENTIALS_NAME_FORM 692  // %s: an example

// More of the browse dialog.
#define IDS_BROWSE_PROPERTIES 600
#define IDS_BROWSE_PROFILE_TITLE 601  // %s: the title
#define IDS_BROWSE_PROFILE_HOST 602   // %s: the name of the host

// What is dragged onto a folder of the browse dialog.
#define IDS_BROWSE_DROP_TYPE 620     // %s: the name of the file; %s: a pattern
#define IDS_BROWSE_DROP_LETTERS 621  // %s: the name of the file or folder
#define IDS_BROWSE_DROP_INSIDE 622   // %s: the name of the folder
#define IDS_BROWSE_DROP_FAILED 623   // %s: the name of the file or folder
#define IDS_BROWSE_DROP_MORE 624     // %s: how many
#define IDS_BROWSE_DROP_REPLACE 625  // %s: how many files
