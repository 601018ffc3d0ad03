<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output version="1.1" standalone="yes" encoding="utf-8"/>
<xsl:template match="/"><a/></xsl:template>
</xsl:stylesheet>
