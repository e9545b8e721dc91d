/* The dialog component's identifiers: the only place where they are written down. They never
 * change. */
#pragma once

// clang-format off
// NOLINTBEGIN(bugprone-macro-parentheses): an identifier is not an expression
#define DEPOTBROWSER_PROMPT_IID fef2ff2a-5ad1-4c2a-ab72-d8e81afe7f9f
#define DEPOTBROWSER_PROMPT_CLSID c1432487-51da-4834-b781-ed0e69dc9002
#define DEPOTBROWSER_BROWSE_IID 2b4c3df6-42d4-41cf-9d62-c7a7a471d45b
#define DEPOTBROWSER_BROWSE2_IID 7d0b8f1e-95a4-4b0f-8f6c-2c9e51d36a44
#define DEPOTBROWSER_BROWSE_CLSID 041e34b8-2a25-4a9b-8d11-0b247820c90b
#define DEPOTBROWSER_LIBID d937b1ad-6226-4ff5-99bb-9d1f1de73ad7
#define DEPOTBROWSER_APPID d030b6a5-c3ec-4bf6-9741-d663287d7d0e
// NOLINTEND(bugprone-macro-parentheses)
// clang-format on
