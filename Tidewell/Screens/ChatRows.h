#pragma once

#include <QtQml/qqmlregistration.h>

#include "Tidewell/Contents/ChatChoiceContent.h"
#include "Tidewell/Screens/RowsModel.h"

// The list of chats to choose from.
class ChatRows : public RowsModel<ChatRowContent> {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")

 public:
  ChatRows() : RowsModel("chat") {}
};
