<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output encoding="US-ASCII"/>
<xsl:template match="/"><r>&#xE9;_</r></xsl:template>
</xsl:stylesheet>
