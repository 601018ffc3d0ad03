<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:template match="/"><a/><xsl:message terminate="yes">no <xsl:value-of select="name(*)"/></xsl:message></xsl:template>
</xsl:stylesheet>
