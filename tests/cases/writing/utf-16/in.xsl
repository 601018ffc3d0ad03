<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output encoding="UTF-16" omit-xml-declaration="yes"/>
<xsl:template match="/"><r>&#x20AC;</r></xsl:template>
</xsl:stylesheet>
