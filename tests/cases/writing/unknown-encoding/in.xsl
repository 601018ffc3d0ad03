<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output encoding="none"/>
<xsl:template match="/"><r>&#xE9;&#x141;</r></xsl:template>
</xsl:stylesheet>
