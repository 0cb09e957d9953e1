# The languages that have a table here, in BCP 47.
set(EXPORT_TEXT_LANGUAGES en pt-BR)
